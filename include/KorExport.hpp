#pragma once

// The library is built with hidden visibility; its classes are exported
// under their own names.
#define KOR_EXPORT __attribute__((visibility("default")))
