#include <KorAbend.hpp>
#include <KorLog.hpp>
#include <KorLogSink.hpp>
#include <KorNamedLogSource.hpp>
#include <KorWstringText.hpp>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

TEST(KorLogTest, OneQuotedLinePerRecordWithKindFunctionSourceAndToken) {
  auto capture = std::make_shared<KorLogCapture>();
  KorLogSink::install(capture);
  const KorNamedLogSource named(L"KorISRAdapterImpl");
  const KorLogToken first = KorLog::entry(named, "A::f", {"say \"hi\"\n", "a\\b\t\x01\x7f", 5});
  const KorLogToken second = KorLog::debugEntry("A::g");
  EXPECT_NE(first, second);
  EXPECT_EQ(KorLogSink::install(nullptr), capture);
  KorLog::trace("A::f", first, {"dropped"});
  EXPECT_EQ(KorLogSink::install(capture), nullptr);
  KorLog::exit(named, "A::f", first, {true});
  KorLogSink::install(nullptr);
  std::vector<std::string> lines;
  for (const KorLogRecord& record : capture->records()) {
    lines.push_back(toString(record));
  }
  const std::string f = std::to_string(first);
  EXPECT_EQ(lines, (std::vector<std::string>{
                       "entry A::f [KorISRAdapterImpl] #" + f + R"( "say \"hi\"\n" "a\\b\t\x01\x7F" "5")",
                       "debugEntry A::g [KorDefaultLogSource] #" + std::to_string(second),
                       "exit A::f [KorISRAdapterImpl] #" + f + " \"true\"",
                   }));
}

TEST(KorLogTest, InsertsRender) {
  const std::pair<KorLogInsert, std::u16string> rows[] = {
      {-42, u"-42"},
      {std::size_t{18446744073709551615U}, u"18446744073709551615"},
      {false, u"false"},
      {reinterpret_cast<const void*>(std::uintptr_t{0xABC0}), u"0xabc0"}, // NOLINT(performance-no-int-to-ptr)
      {"caf\xC3\xA9", u"caf\u00E9"},
      {"a\xC0z\xE2\x82", u"a\uFFFDz\uFFFD\uFFFD"},
      {static_cast<const char*>(nullptr), u""},
      {L"w\U0001F600", u"w\U0001F600"},
  };
  for (const auto& [insert, expected] : rows) {
    EXPECT_EQ(KorWstringText::view(insert.text()), expected);
  }
}

// Empty inserts are left out.
TEST(KorAbendDeathTest, TerminatingVariantReportsThenAborts) {
  EXPECT_DEATH(KorAbend::logSystemErrorAndTerminateProcessInternal(
                   "include/KorMutex", 7, "KorMutex::lock", "Trying to lock an invalid mutex", "", -1,
                   static_cast<const char*>(nullptr), {}, {}, "data", false),
               "systemError KorMutex::lock .*\"include/KorMutex\" \"7\" \"Trying to lock an invalid mutex\" "
               "\"-1\" \"0x[0-9a-f]+\"\n");
}

} // namespace
