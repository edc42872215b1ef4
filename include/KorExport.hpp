#pragma once

/// @file
/// The export attribute of the library's classes. The library is built with
/// hidden visibility; its classes are exported under their own names. Threads:
/// a macro, nothing to share.

/// Marks a class as exported from the shared library.
#define KOR_EXPORT __attribute__((visibility("default")))
