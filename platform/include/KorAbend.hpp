/// @file
/// System-error reports. Threads: any thread may report at any time; each
/// report is written as one whole line.
#pragma once

#include <string>
#include <variant>

/// One insert of a system-error record: empty, a 32-bit integer or a text.
class KorAbendInsert {
public:
  /// An empty insert, left out of the record.
  KorAbendInsert() = default;
  /// An integer, in decimal.
  KorAbendInsert(int value) : value_(value) {}
  /// A text; null is empty.
  KorAbendInsert(const char* text) {
    if (text != nullptr) {
      value_ = std::string(text);
    }
  }

  /// The insert as text; empty for an empty insert.
  std::string render() const;

private:
  std::variant<std::monostate, int, std::string> value_;
};

/// System errors: one line on stderr and a systemError record to the trace
/// sink, whose inserts are the file, the line, the non-empty inserts and data
/// (as an address) when it is not null. This stand-in writes no dumps, so dump
/// is ignored. Reporting never throws: a report that cannot be made is dropped.
class KorAbend {
public:
  /// Reports a system error and returns.
  static void logSystemErrorInternal(const char* sourceFile, int sourceLine, const char* function,
                                     const KorAbendInsert& i1, const KorAbendInsert& i2,
                                     const KorAbendInsert& i3, const KorAbendInsert& i4,
                                     const KorAbendInsert& i5, const KorAbendInsert& i6, const void* data,
                                     bool dump);
  /// Reports a system error, then aborts the process.
  [[noreturn]] static void logSystemErrorAndTerminateProcessInternal(
      const char* sourceFile, int sourceLine, const char* function, const KorAbendInsert& i1,
      const KorAbendInsert& i2, const KorAbendInsert& i3, const KorAbendInsert& i4, const KorAbendInsert& i5,
      const KorAbendInsert& i6, const void* data, bool dump);
};
