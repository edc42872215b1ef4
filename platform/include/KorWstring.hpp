#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

// The platform's text: UTF-16 code units in a reference-counted buffer.
// Copies share the buffer (a copy allocates nothing); a write to a shared
// buffer copies it first. Reference counts are atomic, so copies may live on
// different threads; one KorWstring object is not for concurrent writers.
// Several texts may share one allocation (see KorWstringBlock), which lives
// while any of them does.
class KorWstring {
public:
  using CodeUnit = char16_t;

  KorWstring() noexcept = default;
  KorWstring(const CodeUnit* units, std::size_t count);
  explicit KorWstring(std::u16string_view units);
  KorWstring(const KorWstring& other) noexcept;
  KorWstring(KorWstring&& other) noexcept;
  KorWstring& operator=(const KorWstring& other) noexcept;
  KorWstring& operator=(KorWstring&& other) noexcept;
  ~KorWstring();

  // Strict: overlong forms, encoded surrogates, values above U+10FFFF and
  // truncated sequences throw KorWstringEncodingError, whose offset is the
  // first byte of the offending sequence.
  static KorWstring fromUtf8(std::string_view utf8);
  // A lone surrogate becomes U+FFFD; everything else round-trips.
  std::string toUtf8() const;

  std::size_t length() const noexcept;
  bool empty() const noexcept { return length() == 0; }
  const CodeUnit* data() const noexcept;
  std::u16string_view view() const noexcept { return {data(), length()}; }

  KorWstring& operator+=(const KorWstring& tail);
  KorWstring& append(const CodeUnit* units, std::size_t count);
  void clear() noexcept;
  // Sets the length and returns the units for the caller to fill, unshared:
  // the first min(old, new) keep their values, the rest are unspecified.
  CodeUnit* resizeForOverwrite(std::size_t length);

  // True for a copy of this text, not for another text of the same block.
  bool sharesBufferWith(const KorWstring& other) const noexcept {
    return header_ != nullptr && header_ == other.header_;
  }

  friend bool operator==(const KorWstring& a, const KorWstring& b) noexcept {
    return a.sharesBufferWith(b) || a.view() == b.view();
  }
  friend bool operator!=(const KorWstring& a, const KorWstring& b) noexcept { return !(a == b); }

private:
  friend class KorWstringBlock;
  struct Header;
  // Takes over one reference the caller holds.
  explicit KorWstring(Header* header) noexcept : header_(header) {}
  CodeUnit* reserveUnique(std::size_t capacity);
  void release() noexcept;

  Header* header_ = nullptr;
};

// The units follow the header, so a string costs one allocation, a copy
// none, and a length and its units sit together. The reference count starts
// the allocation: a buffer's own, or the one count of a block (see
// KorWstringBlock) that all its texts share.
struct KorWstring::Header {
  std::atomic<std::size_t>* references;
  std::uint32_t length;
  std::uint32_t capacity;

  CodeUnit* units() noexcept { return reinterpret_cast<CodeUnit*>(this + 1); }

  static constexpr std::size_t maxCapacity() noexcept { return std::numeric_limits<std::uint32_t>::max(); }
  static Header* allocate(std::size_t capacity);
  static void free(Header* header) noexcept;
};

inline std::size_t KorWstring::length() const noexcept {
  return header_ != nullptr ? header_->length : 0;
}

inline const KorWstring::CodeUnit* KorWstring::data() const noexcept {
  return header_ != nullptr ? header_->units() : u"";
}

// One allocation for the many texts of a listing, each with its header in
// it. The texts share the block's one reference count, set once for all of
// them, so handing one out costs no atomic operation; the block is freed when
// the last text lets go.
class KorWstringBlock {
public:
  using CodeUnit = KorWstring::CodeUnit;

  // Room for texts texts of units units in all.
  KorWstringBlock(std::size_t units, std::size_t texts);
  KorWstringBlock(const KorWstringBlock&) = delete;
  KorWstringBlock& operator=(const KorWstringBlock&) = delete;
  ~KorWstringBlock();

  // The next text, a copy of the units given; throws std::out_of_range past
  // the block's units or texts. An empty text holds no reference.
  KorWstring text(const CodeUnit* units, std::size_t length);
  // As above; the caller writes the text's units through units (null for
  // an empty text).
  KorWstring text(std::size_t length, CodeUnit*& units);

private:
  [[noreturn]] static void throwPast();

  std::atomic<std::size_t>* references_ = nullptr;
  char* next_ = nullptr;
  std::size_t units_;
  std::size_t unissued_;
};

// Inline: listings hand out a text per item.
inline KorWstring KorWstringBlock::text(std::size_t length, CodeUnit*& units) {
  if (length == 0) {
    units = nullptr;
    return {};
  }
  if (unissued_ == 0 || length > units_) {
    throwPast();
  }
  auto* header = new (next_)
      KorWstring::Header{references_, static_cast<std::uint32_t>(length), static_cast<std::uint32_t>(length)};
  // Each text's header starts on the header's alignment.
  constexpr std::size_t align = alignof(KorWstring::Header);
  next_ += (sizeof(KorWstring::Header) + length * sizeof(CodeUnit) + align - 1) / align * align;
  units_ -= length;
  --unissued_;
  units = header->units();
  return KorWstring(header);
}

inline KorWstring KorWstringBlock::text(const CodeUnit* units, std::size_t length) {
  CodeUnit* out = nullptr;
  KorWstring result = text(length, out);
  if (length != 0) {
    std::memcpy(out, units, length * sizeof(CodeUnit));
  }
  return result;
}

class KorWstringEncodingError : public std::invalid_argument {
public:
  KorWstringEncodingError(const std::string& what, std::size_t offset)
      : std::invalid_argument(what), offset_(offset) {}
  std::size_t offset() const noexcept { return offset_; }

private:
  std::size_t offset_;
};

namespace KorWstringConvertor {
// wchar_t is UTF-32 here: code points above U+FFFF become surrogate pairs and
// a value in D800-DFFF passes through as that unit. A value above U+10FFFF
// throws KorWstringEncodingError with the index of the wide character.
KorWstring toKorWstring(const wchar_t* literal);
} // namespace KorWstringConvertor

// The key order of every ordered map of the registry: a shared buffer is
// equal, otherwise unsigned code-unit order with a prefix first.
template <> struct std::less<KorWstring> {
  bool operator()(const KorWstring& a, const KorWstring& b) const noexcept {
    if (a.sharesBufferWith(b)) {
      return false;
    }
    return a.view() < b.view();
  }
};
