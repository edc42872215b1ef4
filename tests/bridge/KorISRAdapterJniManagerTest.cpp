#include "KorISRAdapterJniManager.hpp"
#include "TestJvm.hpp"

#include <KorException.hpp>
#include <KorJNI.hpp>
#include <KorJniReturn.hpp>
#include <KorLog.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

namespace {

std::vector<std::string> utf8(const std::vector<KorWstring>& texts) {
  std::vector<std::string> result;
  result.reserve(texts.size());
  for (const auto& text : texts) {
    result.push_back(text.toUtf8());
  }
  return result;
}

jobject newJava(JNIEnv* env, const char* className, const char* signature, ...) {
  jclass cls = env->FindClass(className);
  jmethodID constructor = env->GetMethodID(cls, "<init>", signature);
  va_list args;
  va_start(args, signature);
  jobject object = env->NewObjectV(cls, constructor, args);
  va_end(args);
  EXPECT_NE(object, nullptr) << className;
  return object;
}

jobjectArray javaInserts(JNIEnv* env, std::vector<jobject> inserts) {
  jobjectArray array =
      env->NewObjectArray(static_cast<jsize>(inserts.size()), env->FindClass("java/lang/Object"), nullptr);
  for (jsize i = 0; i < static_cast<jsize>(inserts.size()); ++i) {
    env->SetObjectArrayElement(array, i, inserts[static_cast<std::size_t>(i)]);
  }
  return array;
}

jobject knownException(JNIEnv* env, jlong number, std::vector<jobject> inserts) {
  return newJava(env, "com/vantor/broker/plugin/LxRecoverableException",
                 "(JLjava/lang/String;[Ljava/lang/Object;)V", number, env->NewStringUTF("trace text"),
                 javaInserts(env, std::move(inserts)));
}

void useRegistryLoader(const char* factory, const std::string& argument) {
  jobject loader =
      TestJvm::callStatic("legiorrug/bridge/Loaders", factory, "(Ljava/lang/String;)Ljava/lang/ClassLoader;",
                          TestJvm::string(argument));
  KorJNI::setISRClassLoader(TestJvm::env(), loader);
}

using JniManagerTest = JvmTest;

TEST_F(JniManagerTest, ResolvesEveryRowOnceAndSaysSoWhenAsked) {
  KorJniManager::setDefaultDebugPrint(true);
  testing::internal::CaptureStdout();
  KorISRAdapterJniManager* manager = KorISRAdapterJniManager::instance();
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "KorISRAdapterJniManager::initialise : findClassesAndMethods OK\n");
  EXPECT_EQ(KorISRAdapterJniManager::instance(), manager);
  // The lookup stops at its first failure, so a resolved last row means
  // that every row before it was resolved too.
  EXPECT_NE(manager->messageFlowProxy().stopMessageFlow, nullptr);
  EXPECT_NE(manager->isrAdapter().btdExists, nullptr);
}

struct LookupFailure {
  const char* name;
  const char* loaderFactory;
  std::string loaderArgument;
  std::vector<std::string> debugInserts;
  bool (*lastResolvedRowIsSet)(const KorISRAdapterJniManager&);
  bool (*firstUnresolvedRowIsSet)(const KorISRAdapterJniManager&);
};

void PrintTo(const LookupFailure& failure, std::ostream* out) {
  *out << failure.name;
}

class LookupFailureTest : public JvmTest, public ::testing::WithParamInterface<LookupFailure> {};

TEST_P(LookupFailureTest, KeepsTheRowsBeforeTheFailureAndTracesIt) {
  const LookupFailure& failure = GetParam();
  useRegistryLoader(failure.loaderFactory, failure.loaderArgument);
  auto capture = std::make_shared<KorLogCapture>();
  KorLog::setSink(capture);
  KorLog::iEffectiveLogFilter = 4;
  const KorISRAdapterJniManager& manager = *KorISRAdapterJniManager::instance();
  EXPECT_TRUE(failure.lastResolvedRowIsSet(manager));
  EXPECT_FALSE(failure.firstUnresolvedRowIsSet(manager));
  EXPECT_EQ(manager.messageFlowProxy().cls, nullptr);
  KorLog::iEffectiveLogFilter = 0;
  KorLog::setSink(nullptr);
  std::vector<std::vector<std::string>> traced;
  for (const auto& record : capture->records()) {
    traced.push_back(utf8(record.inserts));
  }
  EXPECT_NE(std::find(traced.begin(), traced.end(), failure.debugInserts), traced.end());
  KorJNI::setISRClassLoader(env, nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Lookup, LookupFailureTest,
    ::testing::Values(
        LookupFailure{"MissingClass",
                      "hiding",
                      "com.vantor.broker.isr.ISRService",
                      {"Unable to locate Java class", "com/vantor/broker/isr/ISRService"},
                      [](const KorISRAdapterJniManager& m) { return m.btdDocument().getContent != nullptr; },
                      [](const KorISRAdapterJniManager& m) { return m.isrService().cls != nullptr; }},
        LookupFailure{
            "MissingMethod",
            "isolated",
            LEGIORRUG_MIGRATION_WITHOUT_MIGRATEISR_CLASSPATH,
            {"Unable to locate Java method or field", "migrateISR",
             "com/vantor/broker/isr/migration/ISRMigration"},
            [](const KorISRAdapterJniManager& m) { return m.isrMigration().getInstance != nullptr; },
            [](const KorISRAdapterJniManager& m) { return m.isrMigration().migrateISR != nullptr; }}),
    [](const auto& info) { return std::string(info.param.name); });

struct Translation {
  const char* name;
  jobject (*throwable)(JNIEnv*);
  bool fatal;
  bool known;
  std::int32_t messageNumber;
  std::vector<std::string> inserts; // of the raised exception, when known
};

void PrintTo(const Translation& row, std::ostream* out) {
  *out << row.name;
}

class TranslationTest : public JvmTest, public ::testing::WithParamInterface<Translation> {};

TEST_P(TranslationTest, SortsThePendingExceptionAndUnpacksAKnownOne) {
  const Translation& row = GetParam();
  const KorISRAdapterJniManager* manager = KorISRAdapterJniManager::instance();
  env->Throw(static_cast<jthrowable>(row.throwable(env)));
  KorJniReturn outcome(env, manager);
  ASSERT_TRUE(outcome.exceptionThrown());
  EXPECT_FALSE(env->ExceptionCheck());
  EXPECT_EQ(outcome.fatal(), row.fatal);
  EXPECT_EQ(outcome.known(), row.known);
  EXPECT_FALSE(outcome.text1().empty()) << "the exception's class is named";
  if (row.known) {
    EXPECT_EQ(outcome.messageNumber(), row.messageNumber);
    KorRecoverableException error("test", 1, "test", KorLog::iDefaultLogSource,
                                  static_cast<std::uint32_t>(outcome.messageNumber()), 0);
    outcome.processRootKnownException(error);
    EXPECT_THAT(utf8(error.textInserts()), ElementsAreArray(row.inserts));
    EXPECT_FALSE(outcome.nested());
  }
}

INSTANTIATE_TEST_SUITE_P(
    Outcome, TranslationTest,
    ::testing::Values(Translation{"KnownWithoutInsertArray",
                                  [](JNIEnv* env) {
                                    return newJava(env, "legiorrug/bridge/NullInsertsException",
                                                   "(JLjava/lang/String;)V", jlong{42},
                                                   env->NewStringUTF("no inserts"));
                                  },
                                  false,
                                  true,
                                  42,
                                  {"no inserts"}},
                      Translation{"PlainLxExceptionIsNotKnown",
                                  [](JNIEnv* env) {
                                    return newJava(env, "com/vantor/broker/plugin/LxException",
                                                   "(JLjava/lang/String;[Ljava/lang/Object;)V", jlong{3001},
                                                   env->NewStringUTF("plain"), javaInserts(env, {}));
                                  },
                                  false,
                                  false,
                                  0,
                                  {}}),
    [](const auto& info) { return std::string(info.param.name); });

// Needs a process of its own: the fatal class is read when the manager is made.
TEST_F(JniManagerTest, AFatalClassThatIsAlsoKnownIsFatal) {
  KorJniManager::setDefaultFatalClassName("legiorrug/bridge/FatalKnownException");
  const KorISRAdapterJniManager* manager = KorISRAdapterJniManager::instance();
  env->Throw(static_cast<jthrowable>(newJava(env, "legiorrug/bridge/FatalKnownException",
                                             "(JLjava/lang/String;)V", jlong{7}, env->NewStringUTF("x"))));
  KorJniReturn outcome(env, manager);
  ASSERT_TRUE(outcome.exceptionThrown());
  EXPECT_TRUE(outcome.fatal());
  EXPECT_TRUE(outcome.known());
}

TEST_F(JniManagerTest, TheErrorGetsTheNumberReadWhenUnpacking) {
  const KorISRAdapterJniManager* manager = KorISRAdapterJniManager::instance();
  env->Throw(static_cast<jthrowable>(newJava(env, "legiorrug/bridge/RenumberedException",
                                             "(JLjava/lang/String;)V", jlong{3001}, env->NewStringUTF("x"))));
  KorJniReturn outcome(env, manager);
  ASSERT_TRUE(outcome.exceptionThrown());
  KorRecoverableException error("test", 1, "test", KorLog::iDefaultLogSource, 3001, 0);
  outcome.processRootKnownException(error);
  EXPECT_EQ(error.messageNumber(), 3002U);
}

TEST_F(JniManagerTest, UnpackingAppendsToTheInsertsGiven) {
  const KorISRAdapterJniManager* manager = KorISRAdapterJniManager::instance();
  jobject exception = knownException(env, 3001, {env->NewStringUTF("a")});
  int number = 0;
  KorWstring text;
  std::vector<KorWstring> inserts{KorWstring::fromUtf8("x")};
  bool nested = false;
  EXPECT_TRUE(manager->processKnownException(env, exception, number, text, inserts, nested));
  EXPECT_EQ(number, 3001);
  EXPECT_EQ(text.toUtf8(), "trace text");
  EXPECT_THAT(utf8(inserts), ElementsAre("x", "a"));
  EXPECT_FALSE(manager->processKnownException(env, nullptr, number, text, inserts, nested));
}

} // namespace
