/// @file
/// The platform's text. Threads: copies of one text may be used on different
/// threads at once; one KorWstring object is not for concurrent writers.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>

/// The platform's text: UTF-16 code units in a reference-counted buffer.
/// Copies share the buffer (a copy allocates nothing); a write to a shared
/// buffer copies it first. Reference counts are atomic, so copies may live on
/// different threads; one KorWstring object is not for concurrent writers.
///
/// This header is the broker platform's text as the library may use it: each
/// operation below says what in the library needs it. Conversions to and from
/// UTF-8 and standard strings, for hosts and tests, are in KorWstringText.hpp.
class KorWstring {
public:
  /// One UTF-16 code unit.
  using CodeUnit = char16_t;

  /// The empty text; allocates nothing.
  KorWstring() noexcept = default;
  /// A text of its own from a run of code units.
  KorWstring(const CodeUnit* units, std::size_t count);
  /// Shares other's buffer, as assignments do: the in-memory registry hands
  /// out its stored texts this way.
  KorWstring(const KorWstring& other) noexcept;
  /// Takes other's buffer; other becomes empty.
  KorWstring(KorWstring&& other) noexcept;
  /// Shares other's buffer.
  KorWstring& operator=(const KorWstring& other) noexcept;
  /// Takes other's buffer.
  KorWstring& operator=(KorWstring&& other) noexcept;
  /// Lets go of the buffer.
  ~KorWstring();

  /// The number of code units: the key order, and the units handed to Java.
  std::size_t length() const noexcept;
  /// Whether there is no code unit.
  bool empty() const noexcept { return length() == 0; }
  /// The code units; valid until the text is written or destroyed.
  const CodeUnit* data() const noexcept;

  /// Appends tail, for building URIs and joined names. A buffer this text
  /// alone holds grows geometrically, as std::u16string's does.
  KorWstring& operator+=(const KorWstring& tail);
  /// Appends count units.
  KorWstring& append(const CodeUnit* units, std::size_t count);
  /// Makes the text empty.
  void clear() noexcept;

  /// True for a copy of this text: the key order's first rule.
  bool sharesBufferWith(const KorWstring& other) const noexcept {
    return header_ != nullptr && header_ == other.header_;
  }

  /// Equal code units. The reserved policy type is recognised by equality.
  friend bool operator==(const KorWstring& a, const KorWstring& b) noexcept {
    return a.sharesBufferWith(b) || (a.length() == b.length() && std::char_traits<CodeUnit>::compare(
                                                                     a.data(), b.data(), a.length()) == 0);
  }
  /// Different code units.
  friend bool operator!=(const KorWstring& a, const KorWstring& b) noexcept { return !(a == b); }

private:
  // The platform's own conversions fill a text in place.
  friend class KorWstringWriter;
  struct Header;
  CodeUnit* reserveUnique(std::size_t capacity);
  void release() noexcept;

  Header* header_ = nullptr;
};

/// @cond
// The units follow the header, so a string costs one allocation, a copy
// none, and a length and its units sit together. The reference count starts
// the allocation.
struct KorWstring::Header {
  std::atomic<std::size_t> references;
  std::uint32_t length;
  std::uint32_t capacity;

  CodeUnit* units() noexcept { return reinterpret_cast<CodeUnit*>(this + 1); }

  static constexpr std::size_t maxCapacity() noexcept { return std::numeric_limits<std::uint32_t>::max(); }
  static Header* allocate(std::size_t capacity);
  static void free(Header* header) noexcept;
};
/// @endcond

inline std::size_t KorWstring::length() const noexcept {
  return header_ != nullptr ? header_->length : 0;
}

inline const KorWstring::CodeUnit* KorWstring::data() const noexcept {
  return header_ != nullptr ? header_->units() : u"";
}

/// Texts from wide-character literals.
namespace KorWstringConvertor {
/// A text from a wide literal: the library's URI prefixes, separators and
/// reserved policy type. wchar_t is UTF-32 here: code points above U+FFFF become surrogate pairs and
/// a value in D800-DFFF passes through as that unit. A value above U+10FFFF
/// throws std::invalid_argument.
KorWstring toKorWstring(const wchar_t* literal);
} // namespace KorWstringConvertor

/// @cond
// The key order of every ordered map of the registry: a shared buffer is
// equal, otherwise unsigned code-unit order with a prefix first.
// Inline: every map lookup makes a few of these. One test a unit while the
// units are equal, where a three-way comparison makes two.
template <> struct std::less<KorWstring> {
  bool operator()(const KorWstring& a, const KorWstring& b) const noexcept {
    if (a.sharesBufferWith(b)) {
      return false;
    }
    const std::size_t aLength = a.length();
    const std::size_t bLength = b.length();
    const std::size_t common = aLength < bLength ? aLength : bLength;
    const KorWstring::CodeUnit* x = a.data();
    const KorWstring::CodeUnit* y = b.data();
    for (std::size_t i = 0; i < common; ++i) {
      if (x[i] != y[i]) {
        return x[i] < y[i];
      }
    }
    return aLength < bLength;
  }
};
/// @endcond
