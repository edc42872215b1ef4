#pragma once

#include "KorWstring.hpp"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

/// @file
/// The trace facility. Threads: every member may be used from any thread;
/// a sink's write() is called from every thread that traces.

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

/// The kind of a trace record: plain entry, exit and trace items, their
/// debug variants, and system errors.
enum class KorLogKind { entry, exit, trace, debugEntry, debugExit, debugTrace, systemError };

/// One trace record, as a sink receives it.
struct KorLogRecord {
  /// What the record is.
  KorLogKind kind;
  /// The writing function's label, for example "KorISRAdapterImpl::getBTD".
  std::string function;
  /// The trace source's name.
  KorWstring source;
  /// The token of the call's entry record.
  KorLogToken token;
  /// The inserts, rendered as texts.
  std::vector<KorWstring> inserts;
};

/// Where records go. write() may be called from many threads at once.
class KorLogSink {
public:
  /// Destroys the sink.
  virtual ~KorLogSink();
  /// Takes one record; called from every thread that traces.
  virtual void write(const KorLogRecord& record) = 0;
};

/// Keeps every record, for tests.
class KorLogCapture : public KorLogSink {
public:
  /// Keeps a copy of record.
  void write(const KorLogRecord& record) override;
  /// The records kept so far, in order.
  std::vector<KorLogRecord> records() const;
  /// Forgets the records kept.
  void clear();

private:
  mutable std::mutex mutex_;
  std::vector<KorLogRecord> records_;
};

/// The trace facility. Callers test iEffectiveLogFilter before building an
/// item: plain items above 2, debug items above 3. The item functions write
/// unconditionally to the sink the host installed (none by default).
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

  /// Hands a whole record to the sink.
  static void write(const KorLogRecord& record);

  /// The host's choice; null discards. Returns the sink it replaces.
  static std::shared_ptr<KorLogSink> setSink(std::shared_ptr<KorLogSink> sink);
};

/// One line: kind, function, [source], \#token, then each insert in double
/// quotes with backslash, double quote, control characters and DEL escaped, e.g.
/// `trace KorISRAdapterStub::getBTD [KorDefaultLogSource] #7 "Throwing exception" "42"`
std::string toString(const KorLogRecord& record);
