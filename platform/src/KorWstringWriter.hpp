#pragma once

#include "KorWstring.hpp"

#include <cstddef>

// The platform's own way to fill a text in place (from Java, from UTF-8),
// with no copy through a scratch buffer.
class KorWstringWriter {
public:
  // Sets the length and returns the units for the caller to fill, unshared:
  // the first min(old, new) keep their values, the rest are unspecified.
  static KorWstring::CodeUnit* resizeForOverwrite(KorWstring& text, std::size_t length);
  // No buffer at all, as a default-constructed text: not even an empty one.
  static bool holdsNothing(const KorWstring& text) noexcept { return text.header_ == nullptr; }
};
