#pragma once

#include "KorWstring.hpp"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

// KorWstring and standard text, for hosts, tools and tests: the broker's
// platform has no such conversions, so the library never uses them.
namespace KorWstringText {

// Strict: overlong forms, encoded surrogates, values above U+10FFFF and
// truncated sequences throw KorWstringEncodingError, whose offset is the
// first byte of the offending sequence.
KorWstring fromUtf8(std::string_view utf8);
// A lone surrogate becomes U+FFFD; everything else round-trips.
std::string toUtf8(const KorWstring& text);

inline KorWstring fromUtf16(std::u16string_view units) {
  return KorWstring(units.data(), units.size());
}
inline std::u16string_view view(const KorWstring& text) noexcept {
  return {text.data(), text.length()};
}

} // namespace KorWstringText

class KorWstringEncodingError : public std::invalid_argument {
public:
  KorWstringEncodingError(const std::string& what, std::size_t offset)
      : std::invalid_argument(what), offset_(offset) {}
  std::size_t offset() const noexcept { return offset_; }

private:
  std::size_t offset_;
};
