#pragma once

#include <KorWstring.hpp>

#include <algorithm>
#include <cstddef>
#include <vector>

// Appends name to names, the names of a listing joined by single spaces. The
// test is on the text so far: an empty name while it is still empty adds
// nothing, so the next name is assigned without a space before it.
inline void korAppendJoined(KorWstring& names, const KorWstring& name) {
  static const KorWstring separator = KorWstringConvertor::toKorWstring(L" ");
  if (names.empty()) {
    names = name;
  } else {
    names += separator;
    names += name;
  }
}

// Room for more texts in a caller's list, still growing it geometrically
// for a caller that appends listing after listing.
inline void korMakeRoom(std::vector<KorWstring>& list, std::size_t more) {
  if (list.capacity() - list.size() < more) {
    list.reserve(std::max(list.size() + more, 2 * list.capacity()));
  }
}
