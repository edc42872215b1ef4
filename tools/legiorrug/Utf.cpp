#include "Utf.hpp"

void appendUtf8(std::string& out, char32_t codePoint) {
  auto byte = [&out](char32_t value) { out += static_cast<char>(value); };
  if (codePoint < 0x80) {
    byte(codePoint);
  } else if (codePoint < 0x800) {
    byte(0xC0 | (codePoint >> 6));
    byte(0x80 | (codePoint & 0x3F));
  } else if (codePoint < 0x10000) {
    byte(0xE0 | (codePoint >> 12));
    byte(0x80 | ((codePoint >> 6) & 0x3F));
    byte(0x80 | (codePoint & 0x3F));
  } else {
    byte(0xF0 | (codePoint >> 18));
    byte(0x80 | ((codePoint >> 12) & 0x3F));
    byte(0x80 | ((codePoint >> 6) & 0x3F));
    byte(0x80 | (codePoint & 0x3F));
  }
}

std::string toWtf8(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char16_t unit = text[i];
    if (isHighSurrogate(unit) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
      appendUtf8(out, 0x10000 + ((char32_t(unit) - 0xD800) << 10) + (char32_t(text[i + 1]) - 0xDC00));
      ++i;
    } else {
      appendUtf8(out, unit);
    }
  }
  return out;
}

bool isControl(char32_t codePoint) {
  return codePoint < 0x20 || (codePoint >= 0x7F && codePoint <= 0x9F) || codePoint == 0x061C ||
         codePoint == 0x200E || codePoint == 0x200F || (codePoint >= 0x2028 && codePoint <= 0x202E) ||
         (codePoint >= 0x2066 && codePoint <= 0x2069);
}

void appendEscape(std::string& out, char32_t unit) {
  static const char hex[] = "0123456789abcdef";
  out += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4) {
    out += hex[(unit >> shift) & 0xF];
  }
}

char32_t nextCodePoint(std::string_view utf8, std::size_t& i) {
  auto byte = [&utf8](std::size_t at) -> char32_t { return static_cast<unsigned char>(utf8[at]); };
  char32_t lead = byte(i);
  std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
  length = i + length > utf8.size() ? 1 : length;
  char32_t codePoint = length == 1 ? lead : lead & (0x7F >> length);
  for (std::size_t k = 1; k < length; ++k) {
    codePoint = codePoint << 6 | (byte(i + k) & 0x3F);
  }
  i += length;
  return codePoint;
}

std::string escapeWideControls(std::string_view utf8) {
  std::string out;
  out.reserve(utf8.size());
  for (std::size_t i = 0; i < utf8.size();) {
    std::size_t start = i;
    char32_t codePoint = nextCodePoint(utf8, i);
    if (codePoint > 0x7F && isControl(codePoint)) {
      appendEscape(out, codePoint);
    } else {
      out.append(utf8.substr(start, i - start));
    }
  }
  return out;
}
