#pragma once

#include <KorWstring.hpp>

#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

// The texts of one listing, gathered one by one, then handed out as ranges
// of one block: one allocation for all of them, and no atomic operation per
// text. The units wait in scratch storage that the thread reuses from one
// listing to the next.
class KorListedTexts {
public:
  using CodeUnit = KorWstring::CodeUnit;

  KorListedTexts() : scratch_(std::move(spare())) {
    scratch_.units.clear();
    scratch_.ends.clear();
  }
  ~KorListedTexts() {
    // A huge listing's scratch is not worth keeping for the thread's life.
    if (scratch_.units.capacity() <= keptUnits) {
      spare() = std::move(scratch_);
    }
  }
  KorListedTexts(const KorListedTexts&) = delete;
  KorListedTexts& operator=(const KorListedTexts&) = delete;

  // Room for the next text's length units; the text counts once kept.
  CodeUnit* room(std::size_t length) {
    scratch_.units.resize(end() + length);
    return scratch_.units.data() + end();
  }
  void keep() { scratch_.ends.push_back(scratch_.units.size()); }
  void add(const KorWstring& text) {
    std::memcpy(room(text.length()), text.data(), text.length() * sizeof(CodeUnit));
    keep();
  }

  std::size_t size() const noexcept { return scratch_.ends.size(); }
  // The last text kept, in a buffer of its own (for trace inserts).
  KorWstring last() const {
    const std::size_t start = size() > 1 ? scratch_.ends[size() - 2] : 0;
    return KorWstring(scratch_.units.data() + start, end() - start);
  }

  // Calls each(text) for every text kept, in order.
  template <typename Each> void handOut(Each&& each) const {
    KorWstringBlock block(end(), size());
    copy(block.units(), 0, end());
    std::size_t start = 0;
    for (std::size_t stop : scratch_.ends) {
      each(block.text(start, stop - start));
      start = stop;
    }
  }

  // As handOut, and appends the texts to joined in the same block: each
  // follows one space (U+0020) unless joined is still empty at that point.
  template <typename Each> void handOutJoined(KorWstring& joined, Each&& each) const {
    if (size() == 0) {
      return;
    }
    std::size_t total = joined.length();
    std::size_t start = 0;
    for (std::size_t stop : scratch_.ends) {
      total += (total != 0 ? 1 : 0) + stop - start;
      start = stop;
    }
    KorWstringBlock block(total, size() + 1);
    CodeUnit* out = block.units();
    std::memcpy(out, joined.data(), joined.length() * sizeof(CodeUnit));
    std::size_t written = joined.length();
    start = 0;
    for (std::size_t stop : scratch_.ends) {
      if (written != 0) {
        out[written++] = u' ';
      }
      copy(out + written, start, stop);
      each(block.text(written, stop - start));
      written += stop - start;
      start = stop;
    }
    joined = block.text(0, total);
  }

private:
  struct Scratch {
    std::vector<CodeUnit> units;
    std::vector<std::size_t> ends;
  };
  static constexpr std::size_t keptUnits = std::size_t{1} << 16;

  static Scratch& spare() {
    static thread_local Scratch scratch;
    return scratch;
  }
  // Units past the last end belong to a text that failed to arrive.
  std::size_t end() const noexcept { return scratch_.ends.empty() ? 0 : scratch_.ends.back(); }
  void copy(CodeUnit* out, std::size_t start, std::size_t stop) const {
    if (stop != start) {
      std::memcpy(out, scratch_.units.data() + start, (stop - start) * sizeof(CodeUnit));
    }
  }

  Scratch scratch_;
};
