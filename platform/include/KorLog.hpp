/// @file
/// The trace facility. Threads: every member may be used from any thread at
/// once; the filter is atomic, so a host may change it while others trace.
#pragma once

#include "KorWstring.hpp"

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <vector>

class KorNamedLogSource;

/// Ties the records of one call together: an entry record's token is
/// carried by its exit record and by any exception raised meanwhile.
using KorLogToken = std::uint64_t;

/// One insert of a trace record, already rendered as text: integers in
/// decimal, bool as true/false, addresses as 0x hex. A null text is empty;
/// each invalid UTF-8 sequence becomes U+FFFD, so tracing never fails on text.
class KorLogInsert {
public:
  /// A text.
  KorLogInsert(const KorWstring& text) : text_(text) {}
  /// A UTF-8 text.
  KorLogInsert(const char* utf8);
  /// A wide literal. Without this a wide literal would bind to const void* and print as an address.
  KorLogInsert(const wchar_t* literal);
  /// An integer, in decimal.
  KorLogInsert(long long value);
  /// An integer, in decimal.
  KorLogInsert(unsigned long long value);
  /// An integer, in decimal.
  KorLogInsert(int value) : KorLogInsert(static_cast<long long>(value)) {}
  /// An integer, in decimal.
  KorLogInsert(unsigned value) : KorLogInsert(static_cast<long long>(value)) {}
  /// An integer, in decimal. size_t and jlong would otherwise be ambiguous.
  KorLogInsert(long value) : KorLogInsert(static_cast<long long>(value)) {}
  /// An integer, in decimal.
  KorLogInsert(unsigned long value) : KorLogInsert(static_cast<unsigned long long>(value)) {}
  /// true or false.
  KorLogInsert(bool value);
  /// An address, as 0x hex.
  KorLogInsert(const void* address);

  /// The rendered text.
  const KorWstring& text() const noexcept { return text_; }

private:
  KorWstring text_;
};

/// The trace facility. Callers test iEffectiveLogFilter before building an
/// item: plain items above 2, debug items above 3. The item functions write
/// unconditionally to the sink the host installed (none by default; see
/// KorLogSink.hpp).
class KorLog {
public:
  /// The trace level: above 2 plain items are written, above 3 debug items
  /// too. A host sets it; 0 by default.
  static std::atomic<int> iEffectiveLogFilter;
  /// The name of the trace source of records that name none.
  static const wchar_t* const iDefaultLogSource;

  /// The inserts of one record.
  using Inserts = std::initializer_list<KorLogInsert>;

  /// Writes an entry item. Entry items return the token that the matching
  /// exit item and any exception raised meanwhile carry.
  static KorLogToken entry(const char* function, Inserts inserts = {});
  /// Writes an entry item of a named source.
  static KorLogToken entry(const KorNamedLogSource& source, const char* function, Inserts inserts = {});
  /// Writes an exit item.
  static void exit(const char* function, KorLogToken token, Inserts inserts = {});
  /// Writes an exit item of a named source.
  static void exit(const KorNamedLogSource& source, const char* function, KorLogToken token,
                   Inserts inserts = {});
  /// Writes a trace item.
  static void trace(const char* function, KorLogToken token, Inserts inserts);
  /// Writes a trace item of a list of texts.
  static void trace(const char* function, KorLogToken token, const std::vector<KorWstring>& inserts);
  /// Writes a debug entry item and returns its token.
  static KorLogToken debugEntry(const char* function, Inserts inserts = {});
  /// Writes a debug exit item.
  static void debugExit(const char* function, KorLogToken token, Inserts inserts = {});
  /// Writes a debug trace item.
  static void debugTrace(const char* function, KorLogToken token, Inserts inserts);
};
