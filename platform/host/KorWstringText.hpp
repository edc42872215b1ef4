/// @file
/// KorWstring and standard text. Threads: the functions keep no state; any
/// thread may call them, on texts no other thread writes.
#pragma once

#include "KorWstring.hpp"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

/// KorWstring and standard text, for hosts, tools and tests: the broker's
/// platform has no such conversions, so the library never uses them.
namespace KorWstringText {

/// A text from UTF-8. Strict: overlong forms, encoded surrogates, values above U+10FFFF and
/// truncated sequences throw KorWstringEncodingError, whose offset is the
/// first byte of the offending sequence.
KorWstring fromUtf8(std::string_view utf8);
/// The text as UTF-8. A lone surrogate becomes U+FFFD; everything else round-trips.
std::string toUtf8(const KorWstring& text);

/// A text of its own from UTF-16 code units.
inline KorWstring fromUtf16(std::u16string_view units) {
  return KorWstring(units.data(), units.size());
}
/// The text's code units as a view; valid as long as text's data() is.
inline std::u16string_view view(const KorWstring& text) noexcept {
  return {text.data(), text.length()};
}

} // namespace KorWstringText

/// Malformed input of a text conversion.
class KorWstringEncodingError : public std::invalid_argument {
public:
  /// The description what, at offset.
  KorWstringEncodingError(const std::string& what, std::size_t offset)
      : std::invalid_argument(what), offset_(offset) {}
  /// Where the offending sequence starts: a byte of UTF-8, or a wide character's index.
  std::size_t offset() const noexcept { return offset_; }

private:
  std::size_t offset_;
};
