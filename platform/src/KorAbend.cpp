#include "KorAbend.hpp"

#include "KorLogSink.hpp"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

namespace {

void reportSystemError(const char* sourceFile, int sourceLine, const char* function,
                       const KorAbendInsert* const (&inserts)[6], const void* data) {
  // The callers are failure paths themselves (a broken mutex, an unlock that
  // failed); an exception from here would turn a report into a second fault.
  try {
    KorLogRecord record{KorLogKind::systemError,
                        function != nullptr ? function : "",
                        KorWstringConvertor::toKorWstring(KorLog::iDefaultLogSource),
                        0,
                        {KorLogInsert(sourceFile).text(), KorLogInsert(sourceLine).text()}};
    for (const KorAbendInsert* insert : inserts) {
      const std::string text = insert->render();
      if (!text.empty()) {
        record.inserts.push_back(KorLogInsert(text.c_str()).text());
      }
    }
    if (data != nullptr) {
      record.inserts.push_back(KorLogInsert(data).text());
    }
    const std::string line = toString(record) + '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
    std::fflush(stderr);
    KorLogSink::publish(record);
  } catch (...) {
  }
}

} // namespace

std::string KorAbendInsert::render() const {
  if (const int* number = std::get_if<int>(&value_)) {
    return std::to_string(*number);
  }
  if (const std::string* text = std::get_if<std::string>(&value_)) {
    return *text;
  }
  return {};
}

void KorAbend::logSystemErrorInternal(const char* sourceFile, int sourceLine, const char* function,
                                      const KorAbendInsert& i1, const KorAbendInsert& i2,
                                      const KorAbendInsert& i3, const KorAbendInsert& i4,
                                      const KorAbendInsert& i5, const KorAbendInsert& i6, const void* data,
                                      bool /*dump*/) {
  reportSystemError(sourceFile, sourceLine, function, {&i1, &i2, &i3, &i4, &i5, &i6}, data);
}

void KorAbend::logSystemErrorAndTerminateProcessInternal(const char* sourceFile, int sourceLine,
                                                         const char* function, const KorAbendInsert& i1,
                                                         const KorAbendInsert& i2, const KorAbendInsert& i3,
                                                         const KorAbendInsert& i4, const KorAbendInsert& i5,
                                                         const KorAbendInsert& i6, const void* data,
                                                         bool /*dump*/) {
  reportSystemError(sourceFile, sourceLine, function, {&i1, &i2, &i3, &i4, &i5, &i6}, data);
  std::abort();
}
