#pragma once

#include "KorTextOfLength.hpp"

#include <KorWstring.hpp>

#include <algorithm>
#include <cstddef>
#include <vector>

// Appends names to joined, each after a single space unless the text so far
// is empty: an empty name while it is still empty adds nothing. The text is
// made once, at its final length.
inline void korAppendJoined(KorWstring& joined, const std::vector<KorWstring>& names) {
  if (names.empty()) {
    return;
  }
  if (joined.empty() && names.size() == 1) {
    joined = names.front();
    return;
  }
  std::size_t length = joined.length();
  for (const KorWstring& name : names) {
    length += (length == 0 ? 0 : 1) + name.length();
  }
  joined = korTextOfLength(length, [&joined, &names](KorWstring::CodeUnit* start) {
    KorWstring::CodeUnit* out = std::copy_n(joined.data(), joined.length(), start);
    for (const KorWstring& name : names) {
      if (out != start) {
        *out++ = u' ';
      }
      out = std::copy_n(name.data(), name.length(), out);
    }
  });
}

// Room for more texts in a caller's list, still growing it geometrically
// for a caller that appends listing after listing.
inline void korMakeRoom(std::vector<KorWstring>& list, std::size_t more) {
  if (list.capacity() - list.size() < more) {
    list.reserve(std::max(list.size() + more, 2 * list.capacity()));
  }
}
