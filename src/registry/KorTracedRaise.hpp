#pragma once

#include <KorException.hpp>
#include <KorLog.hpp>

#include <vector>

// Raises an exception of the library's own, first writing the "Throwing
// exception" record that names it, when plain trace is on. Thrown by its
// own type, so callers catch exactly what was built.
template <typename Exception> [[noreturn]] void korTracedRaise(const Exception& error) {
  if (KorLog::iEffectiveLogFilter > 2) {
    std::vector<KorWstring> inserts{
        KorLogInsert("Throwing exception").text(), KorLogInsert(error.sourceFile().c_str()).text(),
        KorLogInsert(error.sourceLine()).text(), KorLogInsert(error.messageId().c_str()).text()};
    for (const auto& text : error.textInserts()) {
      inserts.push_back(text);
    }
    KorLog::trace(error.function().c_str(), error.token(), inserts);
  }
  throw error;
}
