#pragma once

#include <KorWstring.hpp>

// Appends name to a text of names joined by single spaces. Only the text so
// far decides: an empty name while it is empty adds nothing, and the next
// name then follows without a space. Appending, not assigning, to an empty
// text fills a cleared buffer in place.
inline void korAppendName(KorWstring& names, const KorWstring& name) {
  static const KorWstring separator = KorWstringConvertor::toKorWstring(L" ");
  if (!names.empty()) {
    names += separator;
  }
  names += name;
}
