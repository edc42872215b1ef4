#include "KorISRAdapterJniManager.hpp"
#include "KorISRAdapterImpl.hpp"
#include "TestJvm.hpp"

#include <KorException.hpp>
#include <KorJNI.hpp>
#include <KorJNISetup.hpp>
#include <KorJVM.hpp>
#include <KorJniReturn.hpp>
#include <KorLog.hpp>
#include <KorLogSink.hpp>
#include <KorWstringText.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <thread>

// The scenario rows check what operations make of Java exceptions; here, what
// they cannot reach: failed lookups, the fatal class, the unpacking itself,
// and the platform's JVM resources over the process's life.
namespace {

using Texts = std::vector<std::string>;

Texts utf8(const std::vector<KorWstring>& texts) {
  Texts result;
  for (const auto& text : texts) {
    result.push_back(KorWstringText::toUtf8(text));
  }
  return result;
}

// The manager made over a loader of classPath alone, which must trace the
// lookup failure `traced` and resolve no row after it.
const KorISRAdapterJniManager& managerOver(JNIEnv* env, const std::string& classPath, const Texts& traced) {
  KorJNISetup::setISRClassLoader(env, TestJvm::callStatic("legiorrug/bridge/Loaders", "isolated",
                                                          "(Ljava/lang/String;)Ljava/lang/ClassLoader;",
                                                          TestJvm::string(classPath)));
  auto capture = std::make_shared<KorLogCapture>();
  KorLogSink::install(capture);
  KorLog::iEffectiveLogFilter = 4;
  const KorISRAdapterJniManager& manager = *KorISRAdapterJniManager::instance();
  KorLog::iEffectiveLogFilter = 0;
  KorLogSink::install(nullptr);
  KorJNISetup::setISRClassLoader(env, nullptr);
  const auto& records = capture->records();
  EXPECT_TRUE(std::any_of(records.begin(), records.end(),
                          [&traced](const KorLogRecord& record) { return utf8(record.inserts) == traced; }));
  EXPECT_EQ(manager.messageFlowProxy().cls, nullptr);
  return manager;
}

// Known, numbered 3001 when first read, with the insert "a".
jobject renumbered(JNIEnv* env) {
  jclass cls = env->FindClass("legiorrug/bridge/RenumberedException");
  jobjectArray inserts = env->NewObjectArray(1, env->FindClass("java/lang/Object"), env->NewStringUTF("a"));
  return env->NewObject(cls, env->GetMethodID(cls, "<init>", "(JLjava/lang/String;[Ljava/lang/Object;)V"),
                        jlong{3001}, env->NewStringUTF("trace text"), inserts);
}

using JniManagerTest = JvmTest;

TEST_F(JniManagerTest, AMissingClassIsTraced) {
  const auto& manager =
      managerOver(env, "/nonexistent", {"Unable to locate Java class", "com/vantor/broker/isr/ISRAdapter"});
  EXPECT_EQ(manager.isrAdapter().cls, nullptr);
}

TEST_F(JniManagerTest, AMissingMethodIsTracedAndTheRowsBeforeItKept) {
  const auto& manager = managerOver(env, LEGIORRUG_MIGRATION_WITHOUT_MIGRATEISR_CLASSPATH,
                                    {"Unable to locate Java method or field", "migrateISR",
                                     "com/vantor/broker/isr/migration/ISRMigration"});
  EXPECT_NE(manager.isrMigration().getInstance, nullptr);
  EXPECT_EQ(manager.isrMigration().migrateISR, nullptr);
}

// Needs a process of its own: the fatal class is read when the manager is made.
TEST_F(JniManagerTest, AFatalClassThatIsAlsoKnownIsFatal) {
  KorJNISetup::setFatalClassName("com/vantor/broker/plugin/LxRecoverableException");
  try {
    KorISRAdapterImpl(KorWstringText::fromUtf8("b")).deleteBTD(KorWstringText::fromUtf8("missing"));
    FAIL() << "no exception";
  } catch (const KorFatalException& error) {
    EXPECT_EQ(error.messageNumber(), korMessageNumber(3702));
  }
}

TEST_F(JniManagerTest, AMissingFatalClassRaisesWithNothingLeftPending) {
  KorJNISetup::setFatalClassName("no/such/Fatal");
  EXPECT_THROW(KorISRAdapterJniManager::instance(), KorFatalException);
  EXPECT_FALSE(env->ExceptionCheck());
}

// The manager made with the debug print on says that the lookup went well.
TEST_F(JniManagerTest, UnpackingReadsTheNumberAgainAndAppendsTheInserts) {
  KorJNISetup::setDebugPrint(true);
  auto capture = std::make_shared<KorLogCapture>();
  KorLogSink::install(capture);
  KorLog::iEffectiveLogFilter = 3;
  testing::internal::CaptureStdout();
  const KorISRAdapterJniManager* manager = KorISRAdapterJniManager::instance();
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "KorISRAdapterJniManager::initialise : findClassesAndMethods OK\n");
  KorLog::iEffectiveLogFilter = 0;
  KorLogSink::install(nullptr);
  const auto& records = capture->records();
  EXPECT_EQ(std::count_if(
                records.begin(), records.end(),
                [](const auto& record) { return record.function == "KorISRAdapterJniManager::initialise"; }),
            2)
      << "its entry and exit items";
  jobject exception = renumbered(env);
  env->Throw(static_cast<jthrowable>(exception));
  KorJniReturn outcome(env, manager);
  ASSERT_TRUE(outcome.exceptionThrown());
  KorRecoverableException error("test", 1, "test", KorLog::iDefaultLogSource, 3001, 0);
  outcome.processRootKnownException(error);
  EXPECT_EQ(error.messageNumber(), 3002U);

  int number = 0;
  KorWstring text;
  std::vector<KorWstring> inserts{KorWstringText::fromUtf8("x")};
  bool nested = false;
  EXPECT_TRUE(manager->processKnownException(env, exception, number, text, inserts, nested));
  EXPECT_EQ(utf8(inserts), (Texts{"x", "a"}));
  EXPECT_FALSE(manager->processKnownException(env, nullptr, number, text, inserts, nested));
}

// A failed read hands out no unfilled units: the returned text is empty, and
// the caller's text stays as it was; a null string empties it.
TEST_F(JniManagerTest, AFailedReadOfAJavaStringGivesNothingUnfilled) {
  const KorISRAdapterJniManager* manager = KorISRAdapterJniManager::instance();
  jstring string = TestJvm::string("read me");
  TestJvm::failNthCall(1, "java/lang/StringIndexOutOfBoundsException");
  EXPECT_TRUE(manager->javaStringToKorWstringInternal(env, string).empty());
  EXPECT_TRUE(env->ExceptionCheck());
  env->ExceptionClear();
  KorWstring text = KorWstringText::fromUtf8("kept");
  TestJvm::failNthCall(1, "java/lang/StringIndexOutOfBoundsException");
  EXPECT_FALSE(manager->javaStringToKorWstring(env, string, text));
  TestJvm::stopFailingCalls();
  EXPECT_TRUE(env->ExceptionCheck());
  env->ExceptionClear();
  EXPECT_EQ(KorWstringText::toUtf8(text), "kept");
  EXPECT_TRUE(manager->javaStringToKorWstring(env, nullptr, text));
  EXPECT_TRUE(text.empty()) << "a null string reads as the empty text";
  env->DeleteLocalRef(string);
}

// A broker starts and ends threads all its life: neither the threads the
// platform attached nor the class loaders set before may stay behind.
TEST_F(JniManagerTest, EndedThreadsAndReplacedLoadersAreReleased) {
  jclass thread = env->FindClass("java/lang/Thread");
  jmethodID activeCount = env->GetStaticMethodID(thread, "activeCount", "()I");
  auto javaThreads = [&] {
    const jint count = env->CallStaticIntMethod(thread, activeCount);
    EXPECT_FALSE(env->ExceptionCheck());
    return count;
  };
  const jint threads = javaThreads();
  std::thread([] { KorJVM::getEnvironment(); }).join();
  EXPECT_EQ(javaThreads(), threads) << "the ended thread is still attached";
  env->DeleteLocalRef(thread);

  const long globals = TestJvm::liveGlobalReferences();
  jobject loader =
      TestJvm::callStatic("java/lang/ClassLoader", "getSystemClassLoader", "()Ljava/lang/ClassLoader;");
  KorJNISetup::setISRClassLoader(env, loader);
  KorJNISetup::setISRClassLoader(env, loader);
  EXPECT_EQ(TestJvm::liveGlobalReferences(), globals + 1);
  KorJNISetup::setISRClassLoader(env, nullptr);
  EXPECT_EQ(TestJvm::liveGlobalReferences(), globals);
  env->DeleteLocalRef(loader);
}

} // namespace
