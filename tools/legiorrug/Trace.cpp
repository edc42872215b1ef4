#include "Trace.hpp"
#include <KorLogSink.hpp>

#include "Input.hpp"
#include "Utf.hpp"

#include <cerrno>
#include <cstring>

TraceSink::TraceSink() : file_(stderr), name_("standard error") {}

TraceSink::TraceSink(const std::string& path) : file_(std::fopen(path.c_str(), "ae")), name_(path) {
  if (file_ == nullptr) {
    throw LostData("cannot open the trace file " + path + ": " + std::strerror(errno));
  }
}

TraceSink::~TraceSink() {
  if (file_ != stderr) {
    std::fclose(file_);
  }
}

// Escaped as text output escapes, so that a record is one line a terminal
// shows as it is.
void TraceSink::write(const KorLogRecord& record) {
  print(escapeWideControls(toString(record)) + '\n');
}

// A failed write must not fail the traced operation; the run loop checks.
void TraceSink::print(const std::string& text) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (std::fwrite(text.data(), 1, text.size(), file_) != text.size() || std::fflush(file_) != 0) {
    error_ = error_ == 0 ? errno : error_;
  }
}

void TraceSink::check() {
  std::lock_guard<std::mutex> lock(mutex_);
  if (error_ != 0) {
    throw LostData("cannot write the trace to " + name_ + ": " + std::strerror(error_));
  }
}
