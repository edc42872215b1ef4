#pragma once

#include <KorLog.hpp>
#include <KorWstring.hpp>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

inline KorWstring w(const char* utf8) {
  return KorWstring::fromUtf8(utf8);
}

inline std::vector<std::string> utf8(const std::vector<KorWstring>& texts) {
  std::vector<std::string> result;
  for (const KorWstring& text : texts) {
    result.push_back(text.toUtf8());
  }
  return result;
}

// A record without its token and source: kind, function, then the inserts
// in double quotes.
inline std::string describe(const KorLogRecord& record) {
  static const char* const kinds[] = {"entry",     "exit",       "trace",      "debugEntry",
                                      "debugExit", "debugTrace", "systemError"};
  std::string line = std::string(kinds[static_cast<int>(record.kind)]) + ' ' + record.function;
  for (const KorWstring& insert : record.inserts) {
    line += " \"" + insert.toUtf8() + '"';
  }
  return line;
}

// Captures every record at plain trace level for the life of a test.
class KorTraceFixture : public testing::Test {
protected:
  void SetUp() override {
    previousFilter_ = KorLog::iEffectiveLogFilter.exchange(3);
    KorLog::setSink(capture);
  }
  void TearDown() override {
    KorLog::setSink(nullptr);
    KorLog::iEffectiveLogFilter = previousFilter_;
  }

  std::vector<std::string> lines() const {
    std::vector<std::string> result;
    for (const KorLogRecord& record : capture->records()) {
      result.push_back(describe(record));
    }
    return result;
  }

  std::shared_ptr<KorLogCapture> capture = std::make_shared<KorLogCapture>();

private:
  int previousFilter_ = 0;
};
