#include "KorWstring.hpp"

#include "KorWstringText.hpp"
#include "KorWstringWriter.hpp"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <limits>
#include <new>
#include <utility>

// One pointer, as small as a map key can be.
static_assert(sizeof(KorWstring) == sizeof(void*));

KorWstring::Header* KorWstring::Header::allocate(std::size_t capacity) {
  if (capacity > maxCapacity()) {
    throw std::length_error("KorWstring too long");
  }
  static_assert(sizeof(Header) % alignof(CodeUnit) == 0);
  void* memory = ::operator new(sizeof(Header) + capacity * sizeof(CodeUnit));
  return new (memory) Header{{1}, 0, static_cast<std::uint32_t>(capacity)};
}

void KorWstring::Header::free(Header* header) noexcept {
  header->~Header();
  ::operator delete(header);
}

static_assert(sizeof(KorWstring::CodeUnit) == 2 && alignof(KorWstring::CodeUnit) <= alignof(std::size_t));

namespace {

// What resizeForOverwrite(0) hands out: writable, for zero units.
KorWstring::CodeUnit emptyUnits[1] = {0};

constexpr char32_t replacementCharacter = 0xFFFD;

bool isHighSurrogate(char32_t unit) noexcept {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
bool isLowSurrogate(char32_t unit) noexcept {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

[[noreturn]] void throwInvalidUtf8(std::size_t offset, const char* reason) {
  throw KorWstringEncodingError("invalid UTF-8 at byte offset " + std::to_string(offset) + ": " + reason,
                                offset);
}

// Writes one code point as one or two UTF-16 units; returns the units written.
std::size_t encodeUtf16(char32_t codePoint, KorWstring::CodeUnit* out) noexcept {
  if (codePoint < 0x10000) {
    out[0] = static_cast<KorWstring::CodeUnit>(codePoint);
    return 1;
  }
  codePoint -= 0x10000;
  out[0] = static_cast<KorWstring::CodeUnit>(0xD800 + (codePoint >> 10));
  out[1] = static_cast<KorWstring::CodeUnit>(0xDC00 + (codePoint & 0x3FF));
  return 2;
}

void appendUtf8(char32_t codePoint, std::string& out) {
  if (codePoint < 0x80) {
    out += static_cast<char>(codePoint);
  } else if (codePoint < 0x800) {
    out += static_cast<char>(0xC0 | (codePoint >> 6));
    out += static_cast<char>(0x80 | (codePoint & 0x3F));
  } else if (codePoint < 0x10000) {
    out += static_cast<char>(0xE0 | (codePoint >> 12));
    out += static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (codePoint & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (codePoint >> 18));
    out += static_cast<char>(0x80 | ((codePoint >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (codePoint & 0x3F));
  }
}

// Decodes the sequence starting at utf8[offset]; advances offset past it.
// The bounds of the second byte exclude overlongs, surrogates and values above
// U+10FFFF, so every accepted sequence is the shortest form of a scalar value.
char32_t decodeUtf8(std::string_view utf8, std::size_t& offset) {
  const std::size_t start = offset;
  const auto lead = static_cast<unsigned char>(utf8[offset]);
  if (lead < 0x80) {
    ++offset;
    return lead;
  }
  std::size_t trailing = 0;
  unsigned char secondLow = 0x80;
  unsigned char secondHigh = 0xBF;
  char32_t codePoint = 0;
  if (lead < 0xC0) {
    throwInvalidUtf8(start, "unexpected continuation byte");
  } else if (lead < 0xC2) {
    throwInvalidUtf8(start, "overlong encoding");
  } else if (lead < 0xE0) {
    trailing = 1;
    codePoint = lead & 0x1F;
  } else if (lead < 0xF0) {
    trailing = 2;
    codePoint = lead & 0x0F;
    if (lead == 0xE0) {
      secondLow = 0xA0;
    } else if (lead == 0xED) {
      secondHigh = 0x9F;
    }
  } else if (lead < 0xF5) {
    trailing = 3;
    codePoint = lead & 0x07;
    if (lead == 0xF0) {
      secondLow = 0x90;
    } else if (lead == 0xF4) {
      secondHigh = 0x8F;
    }
  } else {
    throwInvalidUtf8(start, "code point above U+10FFFF");
  }
  for (std::size_t i = 1; i <= trailing; ++i) {
    if (start + i == utf8.size()) {
      throwInvalidUtf8(start, "truncated sequence");
    }
    const auto next = static_cast<unsigned char>(utf8[start + i]);
    if ((next & 0xC0) != 0x80) {
      throwInvalidUtf8(start, "missing continuation byte");
    }
    if (i == 1 && (next < secondLow || next > secondHigh)) {
      throwInvalidUtf8(start, lead == 0xED   ? "surrogate code point"
                              : lead == 0xF4 ? "code point above U+10FFFF"
                                             : "overlong encoding");
    }
    codePoint = (codePoint << 6) | (next & 0x3F);
  }
  offset = start + 1 + trailing;
  return codePoint;
}

} // namespace

KorWstring::KorWstring(const CodeUnit* units, std::size_t count) {
  append(units, count);
}

KorWstring::KorWstring(const KorWstring& other) noexcept : header_(other.header_) {
  if (header_ != nullptr) {
    header_->references.fetch_add(1, std::memory_order_relaxed);
  }
}

KorWstring::KorWstring(KorWstring&& other) noexcept : header_(std::exchange(other.header_, nullptr)) {}

KorWstring& KorWstring::operator=(const KorWstring& other) noexcept {
  if (this == &other || header_ == other.header_) {
    return *this;
  }
  if (other.header_ != nullptr) {
    other.header_->references.fetch_add(1, std::memory_order_relaxed);
  }
  release();
  header_ = other.header_;
  return *this;
}

KorWstring& KorWstring::operator=(KorWstring&& other) noexcept {
  if (this != &other) {
    release();
    header_ = std::exchange(other.header_, nullptr);
  }
  return *this;
}

KorWstring::~KorWstring() {
  release();
}

// A count of one is this string's alone: no other thread can be copying it,
// so the last holder frees without an atomic write.
void KorWstring::release() noexcept {
  if (header_ != nullptr && (header_->references.load(std::memory_order_acquire) == 1 ||
                             header_->references.fetch_sub(1, std::memory_order_acq_rel) == 1)) {
    Header::free(header_);
  }
  header_ = nullptr;
}

KorWstring::CodeUnit* KorWstring::reserveUnique(std::size_t capacity) {
  const bool unique = header_ != nullptr && header_->references.load(std::memory_order_acquire) == 1;
  if (unique && header_->capacity >= capacity) {
    return header_->units();
  }
  if (unique) {
    capacity = std::max(capacity, std::min(std::size_t{header_->capacity} * 2, Header::maxCapacity()));
  }
  Header* fresh = Header::allocate(capacity);
  // A shared buffer may be longer than the capacity asked for.
  fresh->length = static_cast<std::uint32_t>(std::min<std::size_t>(length(), capacity));
  std::memcpy(fresh->units(), data(), fresh->length * sizeof(CodeUnit));
  release();
  header_ = fresh;
  return fresh->units();
}

KorWstring& KorWstring::operator+=(const KorWstring& tail) {
  if (header_ == nullptr) {
    return *this = tail;
  }
  return append(tail.data(), tail.length());
}

KorWstring& KorWstring::append(const CodeUnit* units, std::size_t count) {
  if (count == 0) {
    return *this;
  }
  const std::size_t oldLength = length();
  if (count > Header::maxCapacity() - oldLength) {
    throw std::length_error("KorWstring too long");
  }
  // Units taken from this string's own buffer must outlive a reallocation.
  KorWstring keepAlive;
  const std::less<const CodeUnit*> before;
  if (header_ != nullptr && !before(units, data()) && before(units, data() + header_->capacity)) {
    keepAlive = *this;
  }
  CodeUnit* out = reserveUnique(oldLength + count);
  std::memcpy(out + oldLength, units, count * sizeof(CodeUnit));
  header_->length = static_cast<std::uint32_t>(oldLength + count);
  return *this;
}

// A buffer this string alone holds keeps its capacity for what is appended
// next, as std::u16string's does.
void KorWstring::clear() noexcept {
  if (header_ != nullptr && header_->references.load(std::memory_order_acquire) == 1) {
    header_->length = 0;
  } else {
    release();
  }
}

KorWstring::CodeUnit* KorWstringWriter::resizeForOverwrite(KorWstring& text, std::size_t length) {
  if (length == 0) {
    text.release();
    return emptyUnits;
  }
  // A text read from Java lands in an empty string: nothing to keep or release.
  KorWstring::CodeUnit* units = nullptr;
  if (text.header_ == nullptr) {
    text.header_ = KorWstring::Header::allocate(length);
    units = text.header_->units();
  } else {
    units = text.reserveUnique(length);
  }
  text.header_->length = static_cast<std::uint32_t>(length);
  return units;
}

KorWstring KorWstringText::fromUtf8(std::string_view utf8) {
  KorWstring result;
  // Every byte gives at most one unit: a four-byte sequence gives two.
  KorWstring::CodeUnit* out = KorWstringWriter::resizeForOverwrite(result, utf8.size());
  std::size_t written = 0;
  for (std::size_t offset = 0; offset < utf8.size();) {
    written += encodeUtf16(decodeUtf8(utf8, offset), out + written);
  }
  KorWstringWriter::resizeForOverwrite(result, written);
  return result;
}

std::string KorWstringText::toUtf8(const KorWstring& text) {
  std::string out;
  out.reserve(text.length());
  const KorWstring::CodeUnit* units = text.data();
  const std::size_t count = text.length();
  for (std::size_t i = 0; i < count; ++i) {
    const char32_t unit = units[i];
    if (isHighSurrogate(unit) && i + 1 < count && isLowSurrogate(units[i + 1])) {
      appendUtf8(0x10000 + ((unit - 0xD800) << 10) + (units[i + 1] - 0xDC00), out);
      ++i;
    } else if (isHighSurrogate(unit) || isLowSurrogate(unit)) {
      appendUtf8(replacementCharacter, out);
    } else {
      appendUtf8(unit, out);
    }
  }
  return out;
}

KorWstring KorWstringConvertor::toKorWstring(const wchar_t* literal) {
  static_assert(sizeof(wchar_t) == 4, "wchar_t must hold UTF-32");
  if (literal == nullptr) {
    throw std::invalid_argument("KorWstringConvertor::toKorWstring: null text");
  }
  const std::size_t count = std::wcslen(literal);
  KorWstring result;
  KorWstring::CodeUnit* out = KorWstringWriter::resizeForOverwrite(result, count * 2);
  std::size_t written = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const auto codePoint = static_cast<char32_t>(literal[i]);
    if (codePoint > 0x10FFFF) {
      throw KorWstringEncodingError("wide character at offset " + std::to_string(i) + " is above U+10FFFF",
                                    i);
    }
    // A surrogate value is kept as the unit it names, so lone units survive.
    written += encodeUtf16(codePoint, out + written);
  }
  KorWstringWriter::resizeForOverwrite(result, written);
  return result;
}
