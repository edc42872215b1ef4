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

/// The platform's text: UTF-16 code units in a reference-counted buffer.
/// Copies share the buffer (a copy allocates nothing); a write to a shared
/// buffer copies it first. Reference counts are atomic, so copies may live on
/// different threads; one KorWstring object is not for concurrent writers.
/// Several texts may share one allocation (see KorWstringBlock), which lives
/// while any of them does. Ordered maps order texts by unsigned code unit, a
/// prefix first (std::less<KorWstring>).
class KorWstring {
public:
  /// One UTF-16 code unit.
  using CodeUnit = char16_t;

  /// The empty text; allocates nothing.
  KorWstring() noexcept = default;
  /// A copy of count units.
  KorWstring(const CodeUnit* units, std::size_t count);
  /// A copy of the units.
  explicit KorWstring(std::u16string_view units);
  /// Shares other's buffer.
  KorWstring(const KorWstring& other) noexcept;
  /// Takes other's buffer; other becomes empty.
  KorWstring(KorWstring&& other) noexcept;
  /// Shares other's buffer.
  KorWstring& operator=(const KorWstring& other) noexcept;
  /// Takes other's buffer.
  KorWstring& operator=(KorWstring&& other) noexcept;
  /// Lets go of the buffer.
  ~KorWstring();

  /// A text from UTF-8. Strict: overlong forms, encoded surrogates, values above U+10FFFF and
  /// truncated sequences throw KorWstringEncodingError, whose offset is the
  /// first byte of the offending sequence.
  static KorWstring fromUtf8(std::string_view utf8);
  /// The text as UTF-8. A lone surrogate becomes U+FFFD; everything else round-trips.
  std::string toUtf8() const;

  /// The number of code units.
  std::size_t length() const noexcept;
  /// Whether there is no code unit.
  bool empty() const noexcept { return length() == 0; }
  /// The code units; valid until the text is written or destroyed.
  const CodeUnit* data() const noexcept;
  /// The code units as a view; valid as data() is.
  std::u16string_view view() const noexcept { return {data(), length()}; }

  /// Appends tail.
  KorWstring& operator+=(const KorWstring& tail);
  /// Appends count units.
  KorWstring& append(const CodeUnit* units, std::size_t count);
  /// Makes the text empty.
  void clear() noexcept;
  /// Sets the length and returns the units for the caller to fill, unshared:
  /// the first min(old, new) keep their values, the rest are unspecified.
  CodeUnit* resizeForOverwrite(std::size_t length);

  /// True for a copy of this text, not for another text of the same block.
  bool sharesBufferWith(const KorWstring& other) const noexcept {
    return header_ != nullptr && header_ == other.header_;
  }

  /// Equal code units.
  friend bool operator==(const KorWstring& a, const KorWstring& b) noexcept {
    return a.sharesBufferWith(b) || a.view() == b.view();
  }
  /// Different code units.
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

/// One allocation for the many texts of a listing, each with its header in
/// it. The texts share the block's one reference count, set once for all of
/// them, so handing one out costs no atomic operation; the block is freed when
/// the last text lets go. Threads: one block is filled by one thread; its
/// texts are KorWstrings like any other.
class KorWstringBlock {
public:
  /// One UTF-16 code unit.
  using CodeUnit = KorWstring::CodeUnit;

  /// Room for texts texts of units units in all.
  KorWstringBlock(std::size_t units, std::size_t texts);
  /// Not copyable.
  KorWstringBlock(const KorWstringBlock&) = delete;
  /// Not assignable.
  KorWstringBlock& operator=(const KorWstringBlock&) = delete;
  /// Lets go of the block; the texts handed out keep it.
  ~KorWstringBlock();

  /// The next text, a copy of the units given; throws std::out_of_range past
  /// the block's units or texts. An empty text holds no reference.
  KorWstring text(const CodeUnit* units, std::size_t length);
  /// As above; the caller writes the text's units through units (null for
  /// an empty text).
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

/// Texts from wide-character literals.
namespace KorWstringConvertor {
/// A text from a wide literal. wchar_t is UTF-32 here: code points above U+FFFF become surrogate pairs and
/// a value in D800-DFFF passes through as that unit. A value above U+10FFFF
/// throws KorWstringEncodingError with the index of the wide character.
KorWstring toKorWstring(const wchar_t* literal);
} // namespace KorWstringConvertor

/// @cond
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
/// @endcond
