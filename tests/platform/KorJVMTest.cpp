#include <KorException.hpp>
#include <KorJVM.hpp>
#include <KorJVMStartup.hpp>
#include <KorWstringText.hpp>

#include <gtest/gtest.h>

#include <cstdlib>
#include <dlfcn.h>

namespace {

// A host that never started a JVM reads why in what() itself. A libjvm that
// the process has loaded already is the one used, however the paths to
// another one read.
TEST(KorJVMTest, AProcessWithoutAJvmIsToldSo) {
  ASSERT_NE(dlopen(LEGIORRUG_TEST_LIBJVM, RTLD_NOW | RTLD_GLOBAL), nullptr) << dlerror();
  KorJVMStartup::setLibrary("/nonexistent/libjvm.so");
  setenv("LEGIORRUG_LIBJVM", "/nonexistent/libjvm.so", 1);
  unsetenv("JAVA_HOME");
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
