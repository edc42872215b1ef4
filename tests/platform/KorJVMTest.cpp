#include <KorException.hpp>
#include <KorJVM.hpp>
#include <KorWstringText.hpp>

#include <gtest/gtest.h>

namespace {

// A host that never started a JVM reads why in what() itself.
TEST(KorJVMTest, AProcessWithoutAJvmIsToldSo) {
  try {
    KorJVM::getEnvironment();
    FAIL() << "no exception";
  } catch (const KorFatalException& error) {
    EXPECT_STREQ(error.what(),
                 "DRX3702: Fatal Error Making JNI Call: JNI_GetCreatedJavaVMs (the process has no "
                 "Java virtual machine)");
    EXPECT_EQ(error.textInserts().at(1), KorWstringText::fromUtf16(u"JNI_GetCreatedJavaVMs"));
  }
}

} // namespace
