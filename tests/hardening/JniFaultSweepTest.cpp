#include "KorISRAdapterImpl.hpp"
#include "KorISRAdapterJniManager.hpp"
#include "TestJvm.hpp"

#include <KorException.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace {

KorWstring text(const char* utf8) {
  return KorWstring::fromUtf8(utf8);
}

// The reference registry with a little of everything, so that listings have
// elements to read and lookups find what they ask for.
void seed(KorISRAdapter& adapter) {
  TestJvm::clearReferenceRegistry();
  KorWstring uri;
  for (const char* name : {"Orders", "Invoices"}) {
    adapter.createBTD(text(name), text("<btd/>"), uri);
    adapter.createPolicy(text("Security"), text(name), text("<policy/>"), uri);
    adapter.createService(text(name), text("urn:ns"), text("<service/>"));
  }
}

struct Registry {
  KorISRAdapterImpl& adapter;
  std::unique_ptr<KorISRAdapterImpl>& spare; // built before the run, for the destructor's row
  std::unique_ptr<KorISRAdapterImpl>& built; // destroyed after the run, for the constructor's row
};

struct Operation {
  const char* name;
  std::function<void(Registry&)> run;
  bool raisesUnfaulted; // the Java registry raises a known exception here
};

const KorWstring orders = text("Orders");
const KorWstring security = text("Security");

// Out-parameters of the operations below.
KorWstring uri, content, names;
std::vector<KorWstring> uris;
KorISRService service;

const std::vector<Operation> operations = {
    {"createBTD", [](Registry& r) { r.adapter.createBTD(text("New"), text("<n/>"), uri); }, false},
    {"updateBTD", [](Registry& r) { r.adapter.updateBTD(orders, text("<n/>"), uri); }, false},
    {"getBTD", [](Registry& r) { r.adapter.getBTD(orders, content, uri); }, false},
    {"deleteBTD", [](Registry& r) { r.adapter.deleteBTD(orders); }, false},
    {"btdExists", [](Registry& r) { r.adapter.btdExists(orders); }, false},
    {"listBTDs", [](Registry& r) { r.adapter.listBTDs(uris); }, false},
    {"getBTDNames", [](Registry& r) { r.adapter.getBTDNames(names); }, false},
    {"createPolicy", [](Registry& r) { r.adapter.createPolicy(security, text("New"), text("<n/>"), uri); },
     false},
    {"updatePolicy", [](Registry& r) { r.adapter.updatePolicy(security, orders, text("<n/>"), uri); }, false},
    {"getPolicy", [](Registry& r) { r.adapter.getPolicy(security, orders, content, uri); }, false},
    {"deletePolicy", [](Registry& r) { r.adapter.deletePolicy(security, orders); }, false},
    {"policyExists", [](Registry& r) { r.adapter.policyExists(security, orders); }, false},
    {"getPolicyNames", [](Registry& r) { r.adapter.getPolicyNames(security, names); }, false},
    {"createService", [](Registry& r) { r.adapter.createService(text("New"), text("urn:ns"), text("<n/>")); },
     false},
    {"serviceExists", [](Registry& r) { r.adapter.serviceExists(orders, text("urn:ns")); }, false},
    {"getService", [](Registry& r) { r.adapter.getService(orders, service); }, false},
    {"deleteService", [](Registry& r) { r.adapter.deleteService(orders); }, false},
    {"getServices", [](Registry& r) { r.adapter.getServices(); }, false},
    {"setRepositoryDetails",
     [](Registry& r) {
       r.adapter.setRepositoryDetails(text("1"), text("2"), text("3"), true, text("5"), text("6"), 7);
     },
     false},
    {"migratePoliciesFromISR", [](Registry& r) { r.adapter.migratePoliciesFromISR(); }, false},
    {"stopMessageFlow",
     [](Registry& r) { r.adapter.stopMessageFlow(text("1"), text("2"), text("3"), text("4")); }, false},
    {"KorISRAdapterImpl", [](Registry& r) { r.built = std::make_unique<KorISRAdapterImpl>(text("built")); },
     false},
    {"~KorISRAdapterImpl", [](Registry& r) { r.spare.reset(); }, false},
    // The translation of a known Java exception, with its text and inserts.
    {"getBTD of a missing BTD", [](Registry& r) { r.adapter.getBTD(text("Missing"), content, uri); }, true},
    {"createPolicy of a present policy",
     [](Registry& r) { r.adapter.createPolicy(security, orders, text("<p/>"), uri); }, true},
};

enum class Ending { returned, recoverable, fatal };

struct Outcome {
  Ending ending;
  int calls;          // failable JNI calls the operation made
  std::string raised; // function, message, insert count, call label, "entered" when it carries its entry
                      // item's token and "traced" when its Throwing exception record was written
};

std::string raised(const KorException& error, const std::vector<KorLogRecord>& trace) {
  const std::vector<KorWstring> inserts = error.textInserts();
  bool entered = false, traced = false;
  for (const KorLogRecord& record : trace) {
    const bool own = record.function == error.function() && record.token == error.token();
    entered = entered || (own && record.kind != KorLogKind::trace);
    traced =
        traced || (own && record.kind == KorLogKind::trace && record.inserts.size() == inserts.size() + 4);
  }
  return error.function() + " " + error.messageId() + " " + std::to_string(inserts.size()) + " " +
         (inserts.size() > 1 ? inserts[1].toUtf8() : "") + (entered ? " entered" : "") +
         (traced ? " traced" : "");
}

const std::string pushed = " DRX3702 4 PushLocalFrame entered traced";

// The exceptions that a failed JNI call leaves pending: an Error, which the
// library takes as fatal, and an exception, which it takes as recoverable.
const char* const faultClasses[] = {"java/lang/OutOfMemoryError", "java/lang/IllegalStateException"};

class JniFaultSweep : public JvmTest, public ::testing::WithParamInterface<const char*> {
protected:
  void SetUp() override {
    JvmTest::SetUp();
    adapter_ = std::make_unique<KorISRAdapterImpl>(text("sweep"));
    // Arming makes the global reference to the exception class once.
    TestJvm::failNthCall(0, GetParam());
    TestJvm::stopFailingCalls();
  }
  void TearDown() override {
    adapter_.reset();
    JvmTest::TearDown();
  }

  // One run of op whose nth failable JNI call fails (none when n is 0).
  Outcome runOnce(const Operation& op, int n) {
    seed(*adapter_);
    const long globals = TestJvm::liveGlobalReferences();
    std::unique_ptr<KorISRAdapterImpl> spare = std::make_unique<KorISRAdapterImpl>(text("spare"));
    std::unique_ptr<KorISRAdapterImpl> built;
    Registry registry{*adapter_, spare, built};
    const int frames = TestJvm::localFrameDepth();
    const int warnings = TestJvm::unexpectedJniWarnings();
    Outcome run{Ending::returned, 0, ""};
    auto trace = std::make_shared<KorLogCapture>();
    auto previousSink = KorLog::setSink(trace);
    KorLog::iEffectiveLogFilter = 4;
    TestJvm::failNthCall(n, GetParam());
    try {
      op.run(registry);
    } catch (const KorException& error) {
      run.ending = error.isFatal() ? Ending::fatal : Ending::recoverable;
      run.raised = raised(error, trace->records());
      EXPECT_FALSE(error.inserts().empty()) << "an exception that says nothing: " << error.what();
      if (error.messageNumber() == korMessageNumber(4374)) {
        unreadInserts_.insert(error.what());
      }
    } catch (const std::exception& error) {
      ADD_FAILURE() << "not a native exception: " << error.what();
    }
    run.calls = TestJvm::stopFailingCalls();
    KorLog::iEffectiveLogFilter = 0;
    KorLog::setSink(previousSink);
    if (env->ExceptionCheck()) {
      env->ExceptionDescribe();
      env->ExceptionClear();
      ADD_FAILURE() << "a Java exception was left pending";
    }
    EXPECT_EQ(TestJvm::localFrameDepth(), frames) << "local frames pushed and popped do not match";
    EXPECT_EQ(TestJvm::unexpectedJniWarnings(), warnings) << "the JVM printed JNI warnings";
    spare.reset();
    built.reset();
    EXPECT_EQ(TestJvm::liveGlobalReferences(), globals) << "global references leaked";
    return run;
  }

  std::unique_ptr<KorISRAdapterImpl> adapter_;
  std::set<std::string> unreadInserts_; // DRX4374 texts seen
};

// Fails every failable JNI call of every operation in turn, the first, then
// the second and so on until the operation makes no more.
TEST_P(JniFaultSweep, EveryCallOfEveryOperationFails) {
  long runs = 0;
  const long injectedBefore = TestJvm::faultsInjected();
  for (const Operation& op : operations) {
    SCOPED_TRACE(op.name);
    const Outcome unfaulted = runOnce(op, 0);
    ASSERT_EQ(unfaulted.ending != Ending::returned, op.raisesUnfaulted);
    int n = 1;
    for (;; ++n) {
      SCOPED_TRACE("call " + std::to_string(n) + " fails");
      const Outcome run = runOnce(op, n);
      ++runs;
      if (run.calls < n) {
        EXPECT_EQ(run.ending, unfaulted.ending) << "the run without a fault ends as before";
        break;
      }
      const std::string name = op.name;
      if (name != "~KorISRAdapterImpl") {
        EXPECT_NE(run.ending, Ending::returned) << "a failed JNI call was not reported";
      }
      // A failed frame push (the first call) is the failing function's own DRX3702.
      if ((n == 1 && name != "~KorISRAdapterImpl") ||
          run.raised.find("PushLocalFrame") != std::string::npos) {
        EXPECT_THAT(run.raised,
                    ::testing::AnyOf("KorISRAdapterImpl::" + name.substr(0, name.find(' ')) + pushed,
                                     "KorISRAdapterJniManager::processKnownException" + pushed));
      }
      if (HasFailure()) {
        return;
      }
    }
    std::printf("%s: %d failable JNI calls\n", op.name, n - 1);
  }
  // Both reads of a known exception's inserts failed at some point, each under its own name.
  EXPECT_EQ(unreadInserts_, (std::set<std::string>{"DRX4374: CallObjectMethod() failed",
                                                   "DRX4374: GetObjectArrayElement() failed"}));
  std::printf("fault sweep with %s: %ld runs, %ld faults injected\n", GetParam(), runs,
              TestJvm::faultsInjected() - injectedBefore);
}

INSTANTIATE_TEST_SUITE_P(PendingException, JniFaultSweep, ::testing::ValuesIn(faultClasses),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                           std::string name = info.param;
                           return name.substr(name.rfind('/') + 1);
                         });

// A read that fails while a known exception is unpacked hands out no text.
using UnpackFaults = JvmTest;
TEST_F(UnpackFaults, AFailedReadHandsOutNoText) {
  const KorISRAdapterJniManager* manager = KorISRAdapterJniManager::instance();
  jclass cls = env->FindClass("com/vantor/broker/plugin/LxRecoverableException");
  jobject exception =
      env->NewObject(cls, env->GetMethodID(cls, "<init>", "(JLjava/lang/String;[Ljava/lang/Object;)V"),
                     jlong{3001}, env->NewStringUTF("trace text"),
                     env->NewObjectArray(1, env->FindClass("java/lang/String"), env->NewStringUTF("insert")));
  for (int n = 1;; ++n) {
    KorWstring kept = text("kept");
    std::vector<KorWstring> inserts;
    int number = 0;
    bool nested = false;
    TestJvm::failNthCall(n, "java/lang/IllegalStateException");
    try {
      manager->processKnownException(env, exception, number, kept, inserts, nested);
    } catch (const KorFatalException&) {
    }
    if (TestJvm::stopFailingCalls() < n) {
      break;
    }
    EXPECT_THAT(kept.toUtf8(), ::testing::AnyOf("kept", "trace text")) << "call " << n << " fails";
    EXPECT_TRUE(inserts.empty() || (inserts.size() == 1 && inserts[0] == text("insert"))) << n;
  }
}

} // namespace
