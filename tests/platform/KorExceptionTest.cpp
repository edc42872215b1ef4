#include <KorException.hpp>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

KorRecoverableException recoverable(std::uint32_t number) {
  return KorRecoverableException("src/registry/KorISRAdapterStub", 120, "KorISRAdapterStub::getBTD",
                                 KorLog::iDefaultLogSource, number, 7);
}

TEST(KorExceptionTest, KeepsFieldsAndInsertsInOrder) {
  KorFatalException cause("platform/src/KorJVM", 33, "KorJVM", KorLog::iDefaultLogSource,
                          korMessageNumber(3702), 0);
  cause << "Fatal Error Making JNI Call: FindClass";

  KorRecoverableException error = recoverable(korMessageNumber(2112));
  EXPECT_STREQ(error.what(), "DRX2112");
  error << cause;
  EXPECT_STREQ(error.what(), "DRX2112");
  error << "first" << KorWstring(u"\u00E9") << "";
  EXPECT_STREQ(error.what(), "DRX2112: first");

  const auto& inserts = error.inserts();
  ASSERT_EQ(inserts.size(), 4U);
  ASSERT_TRUE(inserts[0].isNested());
  EXPECT_TRUE(inserts[0].nested().isFatal());
  EXPECT_STREQ(inserts[0].nested().what(), "DRX3702: Fatal Error Making JNI Call: FindClass");
  EXPECT_EQ(error.textInserts(), (std::vector<KorWstring>{KorWstring(u"first"), KorWstring(u"\u00E9"), {}}));

  // The nested item is a copy: later inserts on the cause do not reach it.
  cause << "later";
  EXPECT_EQ(error.inserts()[0].nested().inserts().size(), 1U);
}

TEST(KorExceptionTest, MessageIdAndWhat) {
  struct Row {
    std::uint32_t number;
    std::vector<const char*> inserts;
    const char* messageId;
    const char* what;
  };
  const Row rows[] = {
      {0xC0000840,
       {"Business transation definition does not exist", "again"},
       "DRX2112",
       "DRX2112: Business transation definition does not exist"},
      {0xC0000E77, {}, "DRX3703", "DRX3703"},
      {0xC0000005, {"x"}, "DRX0005", "DRX0005: x"},
      {0xC0002710, {"x"}, "DRX10000", "DRX10000: x"},
      {3001, {"Java text", "a"}, "", "3001: Java text"},
      {0x80000001, {}, "", "2147483649"},
      {0x40000840, {"t"}, "", "1073743936: t"},
      {0, {""}, "", "0: "},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << "row " << (&row - rows));
    KorRecoverableException error = recoverable(row.number);
    for (const char* insert : row.inserts) {
      error << insert;
    }
    EXPECT_EQ(error.messageId(), row.messageId);
    EXPECT_STREQ(error.what(), row.what);
  }
}

TEST(KorExceptionTest, ThrowThisAndCloneKeepTheDynamicType) {
  KorFatalException fatal("f", 1, "fn", KorLog::iDefaultLogSource, korMessageNumber(3702), 3);
  const KorException& base = fatal;
  EXPECT_THROW(base.throwThis(), KorFatalException);
  EXPECT_THROW(base.clone()->throwThis(), KorFatalException);

  KorRecoverableException soft = recoverable(3001);
  soft << "soft";
  const std::shared_ptr<const KorException> copy = static_cast<const KorException&>(soft).clone();
  EXPECT_STREQ(copy->what(), "3001: soft");
  EXPECT_THROW(copy->throwThis(), KorRecoverableException);
}

} // namespace
