#pragma once

#include "KorLog.hpp"
#include "KorWstring.hpp"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

/// @file
/// Where trace records go, for hosts and tests: the broker's platform routes
/// its trace itself, so the library never installs or reads a sink.
/// Threads: install() and publish() may be called from any thread; a sink's
/// write() is called from every thread that traces, at once.

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

  /// Installs the host's choice of sink; null discards. Returns the sink it replaces.
  static std::shared_ptr<KorLogSink> install(std::shared_ptr<KorLogSink> sink);
  /// Hands a record made outside the trace items (a system error) to the sink.
  static void publish(const KorLogRecord& record);
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

/// One line: kind, function, [source], \#token, then each insert in double
/// quotes with backslash, double quote, control characters and DEL escaped, e.g.
/// `trace KorISRAdapterStub::getBTD [KorDefaultLogSource] #7 "Throwing exception" "42"`
std::string toString(const KorLogRecord& record);
