#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>

// The platform's text: UTF-16 code units in a reference-counted buffer.
// Copies share the buffer (a copy allocates nothing); a write to a shared
// buffer copies it first. Reference counts are atomic, so copies may live on
// different threads; one KorWstring object is not for concurrent writers.
// Several texts may share one buffer (see KorWstringBlock): each is a range
// of it, and the buffer lives while any of them does.
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

  // True for a copy of this text (same buffer, same range), not for another
  // text of the same block.
  bool sharesBufferWith(const KorWstring& other) const noexcept {
    return buffer_ != nullptr && buffer_ == other.buffer_ && offset_ == other.offset_ &&
           length_ == other.length_;
  }

  friend bool operator==(const KorWstring& a, const KorWstring& b) noexcept {
    return a.sharesBufferWith(b) || a.view() == b.view();
  }
  friend bool operator!=(const KorWstring& a, const KorWstring& b) noexcept { return !(a == b); }

private:
  friend class KorWstringBlock;
  struct Buffer;
  // Takes over one reference the caller holds.
  KorWstring(Buffer* buffer, std::uint32_t offset, std::uint32_t length) noexcept
      : buffer_(buffer), offset_(offset), length_(length) {}
  CodeUnit* reserveUnique(std::size_t capacity);
  void release() noexcept;

  Buffer* buffer_ = nullptr;
  std::uint32_t offset_ = 0;
  std::uint32_t length_ = 0;
};

// The units follow the header in the same allocation, so a string costs one
// allocation and a copy none. The range sits in the string, so that reading
// a length touches no buffer.
struct KorWstring::Buffer {
  std::atomic<std::size_t> references;
  std::size_t capacity;

  CodeUnit* units() noexcept { return reinterpret_cast<CodeUnit*>(this + 1); }

  static constexpr std::size_t maxCapacity() noexcept { return std::numeric_limits<std::uint32_t>::max(); }
  static Buffer* allocate(std::size_t capacity, std::size_t references = 1);
  static void free(Buffer* buffer) noexcept;
};

inline std::size_t KorWstring::length() const noexcept {
  return length_;
}

inline const KorWstring::CodeUnit* KorWstring::data() const noexcept {
  return buffer_ != nullptr ? buffer_->units() + offset_ : u"";
}

// One allocation for the many texts of a listing: the caller writes their
// units, then takes the texts as ranges of it. The texts share the block's
// one reference count, set once for all of them, so handing one out costs no
// atomic operation; the block is freed when the last text lets go.
class KorWstringBlock {
public:
  using CodeUnit = KorWstring::CodeUnit;

  // Room for capacity units and at most texts texts.
  KorWstringBlock(std::size_t capacity, std::size_t texts);
  KorWstringBlock(const KorWstringBlock&) = delete;
  KorWstringBlock& operator=(const KorWstringBlock&) = delete;
  ~KorWstringBlock();

  CodeUnit* units() noexcept;
  // The units [offset, offset + length); throws std::out_of_range past the
  // block or past its count of texts. An empty text holds no reference.
  KorWstring text(std::size_t offset, std::size_t length);

private:
  KorWstring::Buffer* buffer_;
  std::size_t unissued_;
};

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
