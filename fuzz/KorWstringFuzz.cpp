// KorWstring under arbitrary bytes: the UTF-8 and wide-literal conversions
// against small reference codecs, the key order of the registry's maps, and
// texts that share one block.
#include <KorWstring.hpp>
#include <KorWstringText.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

const auto require = [](bool holds) { holds ? void() : std::abort(); };

// Lone surrogates become U+FFFD, as toUtf8 promises.
std::u16string withoutLoneSurrogates(std::u16string_view units) {
  std::u16string result;
  for (std::size_t i = 0; i < units.size(); ++i) {
    const char16_t unit = units[i];
    if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < units.size() && units[i + 1] >= 0xDC00 &&
        units[i + 1] <= 0xDFFF) {
      result += unit;
      result += units[++i];
    } else {
      result += unit >= 0xD800 && unit <= 0xDFFF ? u'\xFFFD' : unit;
    }
  }
  return result;
}

void utf8(std::string_view bytes) {
  try {
    const KorWstring text = KorWstringText::fromUtf8(bytes);
    require(KorWstringText::toUtf8(text) == bytes);
  } catch (const KorWstringEncodingError& error) {
    // Everything before the offending sequence is valid.
    require(error.offset() < bytes.size());
    require(KorWstringText::toUtf8(KorWstringText::fromUtf8(bytes.substr(0, error.offset()))) ==
            bytes.substr(0, error.offset()));
  }
}

void utf16(std::u16string_view units) {
  const KorWstring text = KorWstringText::fromUtf16(units);
  require(KorWstringText::view(text) == units);
  require(KorWstringText::view(KorWstringText::fromUtf8(KorWstringText::toUtf8(text))) ==
          withoutLoneSurrogates(units));
}

void wide(const std::uint8_t* data, std::size_t size) {
  std::vector<wchar_t> literal(size / sizeof(wchar_t) + 1, L'\0');
  std::memcpy(literal.data(), data, size / sizeof(wchar_t) * sizeof(wchar_t));
  std::u16string expected;
  std::size_t invalid = std::string::npos; // the first value past U+10FFFF
  for (std::size_t i = 0; invalid == std::string::npos && literal[i] != L'\0'; ++i) {
    const auto value = static_cast<std::uint32_t>(literal[i]);
    if (value > 0x10FFFF) {
      invalid = i;
    } else if (value > 0xFFFF) {
      expected += static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10));
      expected += static_cast<char16_t>(0xDC00 + ((value - 0x10000) & 0x3FF));
    } else {
      expected += static_cast<char16_t>(value);
    }
  }
  try {
    const KorWstring text = KorWstringConvertor::toKorWstring(literal.data());
    require(invalid == std::string::npos && KorWstringText::view(text) == expected);
  } catch (const KorWstringEncodingError& error) {
    require(error.offset() == invalid);
  }
}

// The order is a strict weak order, consistent with == and with unsigned
// code-unit comparison; a copy shares its original's buffer until written.
void order(const KorWstring& a, const KorWstring& b, const KorWstring& c) {
  const std::less<KorWstring> less;
  const KorWstring copy = a;
  require(copy.sharesBufferWith(a) || a.empty());
  require(!less(a, a) && !less(a, copy) && !less(copy, a) && copy == a);
  require(less(a, b) == (KorWstringText::view(a) < KorWstringText::view(b)));
  require(!(less(a, b) && less(b, a)));
  require((!less(a, b) && !less(b, a)) == (a == b));
  require(!(less(a, b) && less(b, c)) || less(a, c));
  require(!(!less(a, b) && !less(b, a) && !less(b, c) && !less(c, b)) || (!less(a, c) && !less(c, a)));

  KorWstring written = a;
  written += b;
  require(!written.sharesBufferWith(a) || b.empty());
  require(KorWstringText::view(written).substr(0, a.length()) == KorWstringText::view(a) &&
          KorWstringText::view(copy) == KorWstringText::view(a));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  utf8(bytes);

  std::u16string units(size / 2, u'\0');
  std::memcpy(units.data(), data, units.size() * 2);
  utf16(units);
  wide(data, size);

  const std::size_t third = units.size() / 3;
  order(KorWstringText::fromUtf16(units.substr(0, third)),
        KorWstringText::fromUtf16(units.substr(third, third)),
        KorWstringText::fromUtf16(units.substr(2 * third)));
  return 0;
}
