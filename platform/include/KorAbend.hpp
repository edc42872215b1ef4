#pragma once

#include <string>
#include <variant>

// One insert of a system-error record: empty, a 32-bit integer or a text.
class KorAbendInsert {
public:
  KorAbendInsert() = default;
  KorAbendInsert(int value) : value_(value) {}
  KorAbendInsert(const char* text) {
    if (text != nullptr) {
      value_ = std::string(text);
    }
  }

  std::string render() const;

private:
  std::variant<std::monostate, int, std::string> value_;
};

// System errors: one line on stderr and a systemError record to the trace
// sink, whose inserts are the file, the line, the non-empty inserts and data
// (as an address) when it is not null. This stand-in writes no dumps, so dump
// is ignored. Reporting never throws: a report that cannot be made is dropped.
class KorAbend {
public:
  static void logSystemErrorInternal(const char* sourceFile, int sourceLine, const char* function,
                                     const KorAbendInsert& i1, const KorAbendInsert& i2,
                                     const KorAbendInsert& i3, const KorAbendInsert& i4,
                                     const KorAbendInsert& i5, const KorAbendInsert& i6, const void* data,
                                     bool dump);
  [[noreturn]] static void logSystemErrorAndTerminateProcessInternal(
      const char* sourceFile, int sourceLine, const char* function, const KorAbendInsert& i1,
      const KorAbendInsert& i2, const KorAbendInsert& i3, const KorAbendInsert& i4, const KorAbendInsert& i5,
      const KorAbendInsert& i6, const void* data, bool dump);
};
