#pragma once

#include <KorLog.hpp>
#include <KorLogSink.hpp>

#include <cstdio>
#include <mutex>
#include <string>

// The trace, one line per record as toString() renders it, appended to a file
// or written to standard error. Unlike a plain sink it remembers a failed
// write, so that a lost trace is not a silent one.
class TraceSink : public KorLogSink {
public:
  TraceSink(); // standard error
  // Throws LostData when the file cannot be opened.
  explicit TraceSink(const std::string& path);
  ~TraceSink() override;
  TraceSink(const TraceSink&) = delete;
  TraceSink& operator=(const TraceSink&) = delete;

  void write(const KorLogRecord& record) override;
  // Text the JVM prints, kept with the trace as it is.
  void print(const std::string& text);
  // Throws LostData when a write has failed since the last check.
  void check();

private:
  std::mutex mutex_;
  std::FILE* file_;
  std::string name_;
  int error_ = 0;
};
