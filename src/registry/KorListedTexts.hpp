#pragma once

#include <KorWstring.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

// A listing's texts handed out from one block: one allocation for all of
// them, and no atomic operation per text. visit(see) calls see(units, length)
// for every text, in order, and is called twice: once to size the block, once
// to fill it; each(text) then takes every text.
template <typename Visit, typename Each> void korHandOut(std::size_t count, Visit&& visit, Each&& each) {
  std::size_t total = 0;
  visit([&total](const KorWstring::CodeUnit*, std::size_t length) { total += length; });
  KorWstringBlock block(total, count);
  visit([&](const KorWstring::CodeUnit* units, std::size_t length) { each(block.text(units, length)); });
}

// As korHandOut, and appends the texts to joined, a text of the same block:
// each follows one space (U+0020) unless joined is still empty at that point.
template <typename Visit, typename Each>
void korHandOutJoined(std::size_t count, Visit&& visit, KorWstring& joined, Each&& each) {
  if (count == 0) {
    return;
  }
  std::size_t texts = 0;
  std::size_t total = joined.length();
  visit([&](const KorWstring::CodeUnit*, std::size_t length) {
    texts += length;
    total += (total != 0 ? 1 : 0) + length;
  });
  KorWstringBlock block(texts + total, count + 1);
  KorWstring::CodeUnit* out = nullptr;
  KorWstring whole = block.text(total, out);
  if (!joined.empty()) {
    std::memcpy(out, joined.data(), joined.length() * sizeof(KorWstring::CodeUnit));
  }
  std::size_t written = joined.length();
  visit([&](const KorWstring::CodeUnit* units, std::size_t length) {
    if (written != 0) {
      out[written++] = u' ';
    }
    if (length != 0) {
      std::memcpy(out + written, units, length * sizeof(KorWstring::CodeUnit));
    }
    written += length;
    each(block.text(units, length));
  });
  joined = std::move(whole);
}

// Appends the texts to list, growing it geometrically still, for a caller
// that appends listing after listing.
template <typename Visit>
void korAppendListed(std::size_t count, Visit&& visit, std::vector<KorWstring>& list) {
  if (list.capacity() - list.size() < count) {
    list.reserve(std::max(list.size() + count, 2 * list.capacity()));
  }
  korHandOut(count, visit, [&list](KorWstring text) { list.push_back(std::move(text)); });
}

// The texts as a list, each also appended to joined as korHandOutJoined does.
template <typename Visit>
std::vector<KorWstring> korListJoined(std::size_t count, Visit&& visit, KorWstring& joined) {
  std::vector<KorWstring> list;
  list.reserve(count);
  korHandOutJoined(count, visit, joined, [&list](KorWstring text) { list.push_back(std::move(text)); });
  return list;
}

// The texts of a listing read one by one (from Java), gathered in scratch
// storage that the thread reuses from one listing to the next, then handed
// out as above.
class KorListedTexts {
public:
  using CodeUnit = KorWstring::CodeUnit;

  KorListedTexts() : scratch_(std::exchange(spare(), Scratch())) { scratch_.ends.clear(); }
  ~KorListedTexts() {
    // A huge listing's scratch is not worth keeping for the thread's life.
    if (scratch_.capacity <= keptUnits && spare().units == nullptr) {
      std::swap(spare(), scratch_);
    }
  }
  KorListedTexts(const KorListedTexts&) = delete;
  KorListedTexts& operator=(const KorListedTexts&) = delete;

  void expect(std::size_t texts) { scratch_.ends.reserve(texts); }
  // Room for the next text's length units; the text counts once kept.
  CodeUnit* room(std::size_t length) {
    if (length > scratch_.capacity - end()) {
      scratch_.grow(end() + length);
    }
    pending_ = length;
    return scratch_.units + end();
  }
  void keep() { scratch_.ends.push_back(end() + std::exchange(pending_, 0)); }

  std::size_t size() const noexcept { return scratch_.ends.size(); }
  // The last text kept, in a buffer of its own (for trace inserts).
  KorWstring last() const {
    const std::size_t start = size() > 1 ? scratch_.ends[size() - 2] : 0;
    return KorWstring(scratch_.units + start, end() - start);
  }

  template <typename Each> void handOut(Each&& each) const;
  void appendTo(std::vector<KorWstring>& list) const;
  std::vector<KorWstring> listJoined(KorWstring& joined) const;

private:
  // Units grow by realloc: no zero fill, and a large block moves by
  // remapping rather than copying.
  struct Scratch {
    CodeUnit* units = nullptr;
    std::size_t capacity = 0;
    std::vector<std::size_t> ends;

    Scratch() = default;
    Scratch(Scratch&& other) noexcept
        : units(std::exchange(other.units, nullptr)), capacity(std::exchange(other.capacity, 0)),
          ends(std::move(other.ends)) {}
    Scratch& operator=(Scratch&& other) noexcept {
      std::swap(units, other.units);
      std::swap(capacity, other.capacity);
      std::swap(ends, other.ends);
      return *this;
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch() { std::free(units); }

    void grow(std::size_t needed) {
      const std::size_t wanted = std::max(needed, std::max<std::size_t>(2 * capacity, 1024));
      void* moved = std::realloc(units, wanted * sizeof(CodeUnit));
      if (moved == nullptr) {
        throw std::bad_alloc();
      }
      units = static_cast<CodeUnit*>(moved);
      capacity = wanted;
    }
  };
  static constexpr std::size_t keptUnits = std::size_t{1} << 16;

  static Scratch& spare() {
    static thread_local Scratch scratch;
    return scratch;
  }
  // Units past the last end belong to a text that failed to arrive.
  std::size_t end() const noexcept { return scratch_.ends.empty() ? 0 : scratch_.ends.back(); }
  auto visitor() const {
    return [this](auto&& see) {
      std::size_t start = 0;
      for (std::size_t stop : scratch_.ends) {
        see(scratch_.units + start, stop - start);
        start = stop;
      }
    };
  }

  Scratch scratch_;
  std::size_t pending_ = 0;
};

// Defined once the class is complete, which visitor's deduced type needs.
template <typename Each> void KorListedTexts::handOut(Each&& each) const {
  korHandOut(size(), visitor(), each);
}

inline void KorListedTexts::appendTo(std::vector<KorWstring>& list) const {
  korAppendListed(size(), visitor(), list);
}

inline std::vector<KorWstring> KorListedTexts::listJoined(KorWstring& joined) const {
  return korListJoined(size(), visitor(), joined);
}
