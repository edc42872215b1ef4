// KorWstring under arbitrary bytes: the UTF-8 and wide-literal conversions
// against small reference codecs, the key order of the registry's maps, and
// texts that share one block.
#include <KorWstring.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

void require(bool condition) {
  if (!condition) {
    std::abort();
  }
}

bool isSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit <= 0xDFFF;
}

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
      result += isSurrogate(unit) ? u'\xFFFD' : unit;
    }
  }
  return result;
}

void utf8(std::string_view bytes) {
  try {
    const KorWstring text = KorWstring::fromUtf8(bytes);
    require(text.toUtf8() == bytes);
  } catch (const KorWstringEncodingError& error) {
    // Everything before the offending sequence is valid.
    require(error.offset() < bytes.size());
    require(KorWstring::fromUtf8(bytes.substr(0, error.offset())).toUtf8() ==
            bytes.substr(0, error.offset()));
  }
}

void utf16(std::u16string_view units) {
  const KorWstring text(units);
  require(text.view() == units);
  require(KorWstring::fromUtf8(text.toUtf8()).view() == withoutLoneSurrogates(units));
}

void wide(const std::uint8_t* data, std::size_t size) {
  std::vector<wchar_t> literal(size / sizeof(wchar_t) + 1, L'\0');
  std::memcpy(literal.data(), data, size / sizeof(wchar_t) * sizeof(wchar_t));
  std::u16string expected;
  std::size_t invalid = 0;
  bool valid = true;
  for (std::size_t i = 0; valid && literal[i] != L'\0'; ++i) {
    const auto value = static_cast<std::uint32_t>(literal[i]);
    if (value > 0x10FFFF) {
      valid = false;
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
    require(valid && text.view() == expected);
  } catch (const KorWstringEncodingError& error) {
    require(!valid && error.offset() == invalid);
  }
}

// The order is a strict weak order, consistent with == and with unsigned
// code-unit comparison; a copy shares its original's buffer until written.
void order(const KorWstring& a, const KorWstring& b, const KorWstring& c) {
  const std::less<KorWstring> less;
  const KorWstring copy = a;
  require(copy.sharesBufferWith(a) || a.empty());
  require(!less(a, a) && !less(a, copy) && !less(copy, a) && copy == a);
  require(less(a, b) == (a.view() < b.view()));
  require(!(less(a, b) && less(b, a)));
  require((!less(a, b) && !less(b, a)) == (a == b));
  require(!(less(a, b) && less(b, c)) || less(a, c));
  require(!(!less(a, b) && !less(b, a) && !less(b, c) && !less(c, b)) || (!less(a, c) && !less(c, a)));

  KorWstring written = a;
  written += b;
  require(!written.sharesBufferWith(a) || b.empty());
  require(written.view().substr(0, a.length()) == a.view() && copy.view() == a.view());
}

// Texts of one block order and write as strings of their own: a write to one
// changes no other, and the one kept after the rest are gone stays valid.
void block(std::u16string_view units) {
  const std::size_t third = units.size() / 3;
  const std::size_t cuts[] = {0, third, 2 * third, units.size()};
  std::vector<KorWstring> texts;
  {
    KorWstringBlock block(units.size(), 3);
    for (std::size_t i = 0; i < 3; ++i) {
      texts.push_back(block.text(units.data() + cuts[i], cuts[i + 1] - cuts[i]));
    }
  }
  order(texts[0], texts[1], texts[2]);
  const std::size_t kept = units.empty() ? 0 : units[0] % 3;
  texts[(kept + 1) % 3].append(units.data(), units.size());
  for (std::size_t i = 0; i < 3; ++i) {
    require(i == (kept + 1) % 3 || texts[i].view() == units.substr(cuts[i], cuts[i + 1] - cuts[i]));
  }
  KorWstring last = std::move(texts[kept]);
  texts.clear();
  last.append(u"!", 1);
  require(last.view().substr(0, last.length() - 1) == units.substr(cuts[kept], cuts[kept + 1] - cuts[kept]));
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
  order(KorWstring(units.substr(0, third)), KorWstring(units.substr(third, third)),
        KorWstring(units.substr(2 * third)));
  block(units);
  return 0;
}
