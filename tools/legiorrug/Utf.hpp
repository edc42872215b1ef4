#pragma once

#include <string>
#include <string_view>

// UTF-8 for one code point. A surrogate code point gets the 3-byte form that
// strict UTF-8 forbids; only the JSON writer's private encoding relies on it.
void appendUtf8(std::string& out, char32_t codePoint);

// The UTF-16 text as UTF-8, keeping each lone surrogate as its 3-byte form
// (WTF-8), so that nothing is lost on the way to the JSON writer.
std::string toWtf8(std::u16string_view text);

inline bool isHighSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
inline bool isLowSurrogate(char16_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}
