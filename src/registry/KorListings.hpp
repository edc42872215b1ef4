#pragma once

#include <KorWstring.hpp>

#include <algorithm>
#include <cstddef>
#include <vector>

// Appends names to joined, each after a single space unless the text so far
// is empty: an empty name while it is still empty adds nothing. The text is
// built once at its final length, so what the caller gets holds no spare room.
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
  std::vector<KorWstring::CodeUnit> text;
  text.reserve(length);
  text.insert(text.end(), joined.data(), joined.data() + joined.length());
  for (const KorWstring& name : names) {
    if (!text.empty()) {
      text.push_back(u' ');
    }
    text.insert(text.end(), name.data(), name.data() + name.length());
  }
  joined = KorWstring(text.data(), text.size());
}

// Room for more texts in a caller's list, still growing it geometrically
// for a caller that appends listing after listing.
inline void korMakeRoom(std::vector<KorWstring>& list, std::size_t more) {
  if (list.capacity() - list.size() < more) {
    list.reserve(std::max(list.size() + more, 2 * list.capacity()));
  }
}
