#pragma once

#include <KorWstring.hpp>

#include <cstddef>
#include <iterator>
#include <memory>

// A text of exactly length units, which fill writes in one go: the text is a
// single allocation of its own length, holding no spare room, and the
// units are gathered on the stack when they fit.
template <typename Fill> KorWstring korTextOfLength(std::size_t length, Fill fill) {
  KorWstring::CodeUnit stack[128];
  if (length <= std::size(stack)) {
    fill(stack);
    return KorWstring(stack, length);
  }
  const std::unique_ptr<KorWstring::CodeUnit[]> heap(new KorWstring::CodeUnit[length]);
  fill(heap.get());
  return KorWstring(heap.get(), length);
}
