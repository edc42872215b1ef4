#include "Trace.hpp"
#include <KorLogSink.hpp>

#include "Input.hpp"

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

void TraceSink::write(const KorLogRecord& record) {
  put(toString(record) + '\n');
}

void TraceSink::print(const char* format, va_list arguments) {
  va_list copy;
  va_copy(copy, arguments);
  int size = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  std::string text(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  put(text);
}

// A failed write must not fail the traced operation; the run loop checks.
void TraceSink::put(const std::string& text) {
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
