#pragma once

#include <string>
#include <string_view>

// UTF-8 for one code point. A surrogate code point gets the 3-byte form that
// strict UTF-8 forbids; only the JSON writer's private encoding relies on it.
void appendUtf8(std::string& out, char32_t codePoint);

// The UTF-16 text as UTF-8, keeping each lone surrogate as its 3-byte form
// (WTF-8), so that nothing is lost on the way to the JSON writer.
std::string toWtf8(std::u16string_view text);

// Shown as a \uXXXX escape by every output: C0, DEL, C1, the line and
// paragraph separators (line breaks to some readers) and the marks that
// reorder text on a terminal.
bool isControl(char32_t codePoint);

// \uXXXX for a code unit.
void appendEscape(std::string& out, char32_t unit);

// The code point of the (WTF-8) sequence at i, which it moves past; a byte
// that starts no whole sequence is taken alone.
char32_t nextCodePoint(std::string_view utf8, std::size_t& i);

// The UTF-8 text with each control above U+007F escaped as \uXXXX, for text
// that escapes the ASCII ones itself.
std::string escapeWideControls(std::string_view utf8);

inline bool isHighSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
inline bool isLowSurrogate(char16_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}
