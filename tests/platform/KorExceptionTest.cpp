#include <KorException.hpp>
#include <KorWstringText.hpp>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TEST(KorExceptionTest, NestsACopyAndKeepsTheTextInsertsInOrder) {
  KorFatalException cause("f", 1, "fn", KorLog::iDefaultLogSource, korMessageNumber(3702), 0);
  cause << "cause";
  KorRecoverableException error("f", 1, "fn", KorLog::iDefaultLogSource, korMessageNumber(2112), 7);
  error << cause << "first" << KorWstringText::fromUtf16(u"\u00E9") << "";
  cause << "later";
  EXPECT_STREQ(error.what(), "DRX2112: first");
  ASSERT_TRUE(error.inserts().at(0).isNested());
  EXPECT_EQ(error.inserts()[0].nested().inserts().size(), 1U);
  EXPECT_THROW(error.inserts()[0].nested().throwThis(), KorFatalException);
  EXPECT_EQ(error.textInserts(),
            (std::vector<KorWstring>{
                KorWstringText::fromUtf16(u"first"), KorWstringText::fromUtf16(u"\u00E9"), {}}));
}

TEST(KorExceptionTest, MessageIdAndWhat) {
  struct Row {
    std::uint32_t number;
    std::vector<const char*> inserts;
    const char* messageId;
    const char* what;
  };
  const Row rows[] = {
      {0xC0000005, {"x"}, "DRX0005", "DRX0005: x"},      {0xC0002710, {"x"}, "DRX10000", "DRX10000: x"},
      {3001, {"Java text", "a"}, "", "3001: Java text"}, {0x80000001, {}, "", "2147483649"},
      {0x40000840, {"t"}, "", "1073743936: t"},          {0, {""}, "", "0: "},
  };
  for (const Row& row : rows) {
    KorRecoverableException error("f", 1, "fn", KorLog::iDefaultLogSource, row.number, 7);
    for (const char* insert : row.inserts) {
      error << insert;
    }
    EXPECT_EQ(error.messageId(), row.messageId) << row.what;
    EXPECT_STREQ(error.what(), row.what);
  }
  // A Java side's number is its own, whatever its top bits.
  KorRecoverableException translated("f", 1, "fn", KorLog::iDefaultLogSource, 0xFFFFFFFF, 7);
  translated.setMessageNumber(0xFFFFFFFF);
  translated << "neg";
  EXPECT_STREQ(translated.what(), "4294967295: neg");
}

} // namespace
