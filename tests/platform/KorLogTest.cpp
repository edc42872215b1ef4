#include <KorAbend.hpp>
#include <KorLog.hpp>
#include <KorNamedLogSource.hpp>

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace {

class KorLogTest : public testing::Test {
protected:
  void SetUp() override { KorLog::setSink(capture); }
  void TearDown() override { KorLog::setSink(nullptr); }

  std::shared_ptr<KorLogCapture> capture = std::make_shared<KorLogCapture>();
};

std::vector<std::string> lines(const KorLogCapture& capture) {
  std::vector<std::string> result;
  for (const KorLogRecord& record : capture.records()) {
    result.push_back(toString(record));
  }
  return result;
}

TEST_F(KorLogTest, ItemsCarryKindFunctionSourceTokenAndInserts) {
  const KorNamedLogSource named(L"KorISRAdapterImpl");
  const KorLogToken first = KorLog::entry(named, "A::f", {"name", 5});
  const KorLogToken second = KorLog::debugEntry("A::g");
  EXPECT_NE(first, 0U);
  EXPECT_NE(first, second);
  EXPECT_EQ(KorLog::setSink(nullptr), capture);
  KorLog::trace("A::f", first, {"dropped"});
  EXPECT_EQ(KorLog::setSink(capture), nullptr);
  KorLog::exit(named, "A::f", first, {true});
  const std::string f = std::to_string(first);
  EXPECT_EQ(lines(*capture), (std::vector<std::string>{
                                 "entry A::f [KorISRAdapterImpl] #" + f + " \"name\" \"5\"",
                                 "debugEntry A::g [KorDefaultLogSource] #" + std::to_string(second),
                                 "exit A::f [KorISRAdapterImpl] #" + f + " \"true\"",
                             }));
}

TEST_F(KorLogTest, InsertsRender) {
  struct Row {
    KorLogInsert insert;
    std::u16string expected;
  };
  const Row rows[] = {
      {-42, u"-42"},
      {std::size_t{18446744073709551615U}, u"18446744073709551615"},
      {false, u"false"},
      {static_cast<const void*>(nullptr), u"0x0"},
      {reinterpret_cast<const void*>(std::uintptr_t{0xABC0}), u"0xabc0"}, // NOLINT(performance-no-int-to-ptr)
      {"caf\xC3\xA9", u"caf\u00E9"},
      {"a\xC0z\xE2\x82", u"a\uFFFDz\uFFFD\uFFFD"},
      {static_cast<const char*>(nullptr), u""},
      {L"w\U0001F600", u"w\U0001F600"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << "row " << (&row - rows));
    EXPECT_EQ(row.insert.text().view(), row.expected);
  }
}

TEST(KorLogLineTest, OneLinePerRecordWithQuotedInserts) {
  const KorLogRecord record{KorLogKind::debugTrace,
                            "KorISRAdapterImpl::getBTD",
                            KorWstring(u"Src"),
                            12,
                            {KorWstring(u"say \"hi\"\n"), KorWstring(u"a\\b\t\x01\x7f"), KorWstring()}};
  EXPECT_EQ(toString(record),
            R"(debugTrace KorISRAdapterImpl::getBTD [Src] #12 "say \"hi\"\n" "a\\b\t\x01\x7F" "")");
}

TEST(KorLogTextSinkTest, AppendsLinesToTheFile) {
  char path[] = "/tmp/KorLogTextSinkTestXXXXXX";
  const int descriptor = mkstemp(path);
  ASSERT_GE(descriptor, 0);
  close(descriptor);
  const KorLogRecord first{KorLogKind::entry, "A::f", KorWstring(u"S"), 1, {KorWstring(u"x y")}};
  const KorLogRecord second{KorLogKind::systemError, "B::g", KorWstring(u"S"), 0, {}};
  KorLogTextSink(path).write(first);
  KorLogTextSink(path).write(second);

  std::ifstream file(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) {
    lines.push_back(line);
  }
  std::remove(path);
  EXPECT_EQ(lines, (std::vector<std::string>{toString(first), toString(second)}));
  EXPECT_THROW(KorLogTextSink("/nonexistent-directory/trace.txt"), std::system_error);
}

TEST_F(KorLogTest, SystemErrorIsTracedWithItsNonEmptyInserts) {
  KorAbend::logSystemErrorInternal("include/KorMutex", 42, "pthread_mutex_init", 22, {}, "KorMutex", "",
                                   static_cast<const char*>(nullptr), -1, nullptr, false);
  EXPECT_EQ(lines(*capture),
            std::vector<std::string>{"systemError pthread_mutex_init [KorDefaultLogSource] #0 "
                                     "\"include/KorMutex\" \"42\" \"22\" \"KorMutex\" \"-1\""});
}

TEST(KorAbendDeathTest, TerminatingVariantReportsThenAborts) {
  EXPECT_DEATH(KorAbend::logSystemErrorAndTerminateProcessInternal("include/KorMutex", 7, "KorMutex::lock",
                                                                   "Trying to lock an invalid mutex", {}, {},
                                                                   {}, {}, {}, nullptr, false),
               "systemError KorMutex::lock .*\"include/KorMutex\" \"7\" \"Trying to lock an invalid mutex\"");
}

} // namespace
