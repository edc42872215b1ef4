#pragma once

#include "KorLog.hpp"
#include "KorWstring.hpp"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

// Where trace records go, for hosts and tests: the broker's platform routes
// its trace itself, so the library never installs or reads a sink.

enum class KorLogKind { entry, exit, trace, debugEntry, debugExit, debugTrace, systemError };

struct KorLogRecord {
  KorLogKind kind;
  std::string function;
  KorWstring source;
  KorLogToken token;
  std::vector<KorWstring> inserts;
};

// Where records go. write() may be called from many threads at once.
class KorLogSink {
public:
  virtual ~KorLogSink();
  virtual void write(const KorLogRecord& record) = 0;

  // The host's choice; null discards. Returns the sink it replaces.
  static std::shared_ptr<KorLogSink> install(std::shared_ptr<KorLogSink> sink);
  // Hands a record made outside the trace items (a system error) to the sink.
  static void publish(const KorLogRecord& record);
};

// Keeps every record, for tests.
class KorLogCapture : public KorLogSink {
public:
  void write(const KorLogRecord& record) override;
  std::vector<KorLogRecord> records() const;
  void clear();

private:
  mutable std::mutex mutex_;
  std::vector<KorLogRecord> records_;
};

// One line: kind, function, [source], #token, then each insert in double
// quotes with \\, \", control characters and DEL escaped, e.g.
//   trace KorISRAdapterStub::getBTD [KorDefaultLogSource] #7 "Throwing exception" "42"
std::string toString(const KorLogRecord& record);
