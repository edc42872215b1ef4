#include "KorISRAdapterImpl.hpp"
#include "TestJvm.hpp"

#include <KorException.hpp>
#include <KorLogSink.hpp>
#include <KorWstringText.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace {

const auto text = KorWstringText::fromUtf8;

// The adapter under test, one for the destructor's row and one the constructor's row builds.
std::unique_ptr<KorISRAdapterImpl> adapter, spare, built;
const KorWstring orders = text("Orders"), security = text("Security");
KorWstring uri, content, names; // out-parameters
std::vector<KorWstring> uris;
KorISRService service;

struct Operation {
  const char* name; // a name longer than the operation's: it raises a known exception unfaulted
  void (*run)();
};

const Operation operations[] = {
    {"createBTD", [] { adapter->createBTD(text("New"), text("<n/>"), uri); }},
    {"updateBTD", [] { adapter->updateBTD(orders, text("<n/>"), uri); }},
    {"getBTD", [] { adapter->getBTD(orders, content, uri); }},
    {"deleteBTD", [] { adapter->deleteBTD(orders); }},
    {"btdExists", [] { adapter->btdExists(orders); }},
    {"listBTDs", [] { adapter->listBTDs(uris); }},
    {"getBTDNames", [] { adapter->getBTDNames(names); }},
    {"createPolicy", [] { adapter->createPolicy(security, text("New"), text("<n/>"), uri); }},
    {"updatePolicy", [] { adapter->updatePolicy(security, orders, text("<n/>"), uri); }},
    {"getPolicy", [] { adapter->getPolicy(security, orders, content, uri); }},
    {"deletePolicy", [] { adapter->deletePolicy(security, orders); }},
    {"policyExists", [] { adapter->policyExists(security, orders); }},
    {"getPolicyNames", [] { adapter->getPolicyNames(security, names); }},
    {"createService", [] { adapter->createService(text("New"), text("urn:ns"), text("<n/>")); }},
    {"serviceExists", [] { adapter->serviceExists(orders, text("urn:ns")); }},
    {"getService", [] { adapter->getService(orders, service); }},
    {"deleteService", [] { adapter->deleteService(orders); }},
    {"getServices", [] { adapter->getServices(); }},
    {"setRepositoryDetails",
     [] { adapter->setRepositoryDetails(text("1"), text("2"), text("3"), true, text("5"), text("6"), 7); }},
    {"migratePoliciesFromISR", [] { adapter->migratePoliciesFromISR(); }},
    {"stopMessageFlow", [] { adapter->stopMessageFlow(text("1"), text("2"), text("3"), text("4")); }},
    {"KorISRAdapterImpl", [] { built = std::make_unique<KorISRAdapterImpl>(text("built")); }},
    {"~KorISRAdapterImpl", [] { spare.reset(); }},
    {"getBTD of a missing BTD", [] { adapter->getBTD(text("Missing"), content, uri); }},
    {"createPolicy of a present policy", [] { adapter->createPolicy(security, orders, text("<p/>"), uri); }},
};

// How a run ended: "" when it returned, else fatal or recoverable, function, message, insert count,
// call label, "entered" when it carries its entry's token, "traced" when its raise was traced.
std::string raised(const KorException& error, const std::vector<KorLogRecord>& trace) {
  const std::vector<KorWstring> inserts = error.textInserts();
  std::string said = std::string(error.isFatal() ? "fatal " : "recoverable ") + error.function() + " " +
                     error.messageId() + " " + std::to_string(inserts.size()) + " " +
                     (inserts.size() > 1 ? KorWstringText::toUtf8(inserts[1]) : "");
  bool entered = false, traced = false;
  for (const KorLogRecord& record : trace) {
    const bool own = record.function == error.function() && record.token == error.token();
    entered = entered || (own && record.kind != KorLogKind::trace);
    traced =
        traced || (own && record.kind == KorLogKind::trace && record.inserts.size() == inserts.size() + 4);
  }
  return said + (entered ? " entered" : "") + (traced ? " traced" : "");
}

// Failed JNI calls leave an Error pending, which the library takes as fatal, or a recoverable exception.
class JniFaultSweep : public JvmTest, public ::testing::WithParamInterface<const char*> {
protected:
  // One run of op whose nth failable JNI call fails (none when n is 0).
  std::string runOnce(const Operation& op, int n) {
    TestJvm::clearReferenceRegistry();
    for (const char* name : {"Orders", "Invoices"}) { // so that listings and lookups find something
      adapter->createBTD(text(name), text("<btd/>"), uri);
      adapter->createPolicy(security, text(name), text("<policy/>"), uri);
      adapter->createService(text(name), text("urn:ns"), text("<service/>"));
    }
    const long globals = TestJvm::liveGlobalReferences();
    spare = std::make_unique<KorISRAdapterImpl>(text("spare"));
    std::string run;
    auto trace = std::make_shared<KorLogCapture>();
    auto previousSink = KorLogSink::install(trace);
    KorLog::iEffectiveLogFilter = 4;
    TestJvm::failNthCall(n, GetParam());
    try {
      op.run();
    } catch (const KorException& error) {
      run = raised(error, trace->records());
      std::ifstream source(std::string(LEGIORRUG_SOURCE_DIR) + "/" + error.sourceFile() + ".cpp");
      for (int n = 0; n < error.sourceLine() && std::getline(source, raisingLine_); ++n) {
      }
      EXPECT_FALSE(error.inserts().empty()) << "an exception that says nothing: " << error.what();
      if (error.messageNumber() == korMessageNumber(4374)) {
        unreadInserts_.insert(error.what());
      }
    }
    calls_ = TestJvm::stopFailingCalls();
    KorLog::iEffectiveLogFilter = 0;
    KorLogSink::install(previousSink);
    // JvmTest checks the JVM's warnings and the local frame depth over the whole sweep.
    EXPECT_FALSE(env->ExceptionCheck()) << "a Java exception was left pending";
    spare.reset();
    built.reset();
    EXPECT_EQ(TestJvm::liveGlobalReferences(), globals) << "global references leaked";
    return run;
  }

  int calls_ = 0;                       // failable JNI calls the last run made
  std::string raisingLine_;             // the last raise's source line
  std::set<std::string> unreadInserts_; // DRX4374 texts seen
};

// Fails each failable JNI call of each operation in turn, until the operation makes no more.
TEST_P(JniFaultSweep, EveryCallOfEveryOperationFails) {
  adapter = std::make_unique<KorISRAdapterImpl>(text("sweep"));
  TestJvm::failNthCall(0, GetParam()); // makes the global reference to the exception class once
  TestJvm::stopFailingCalls();
  for (const Operation& op : operations) {
    SCOPED_TRACE(op.name);
    const std::string name = op.name, function = name.substr(0, name.find(' ')), unfaulted = runOnce(op, 0);
    ASSERT_EQ(unfaulted.empty(), name == function) << unfaulted;
    for (int n = 1;; ++n) {
      SCOPED_TRACE("call " + std::to_string(n) + " fails");
      const std::string run = runOnce(op, n);
      if (calls_ < n) {
        EXPECT_EQ(run, unfaulted) << "the run without a fault ends as before";
        break;
      }
      const bool destructor = name == "~KorISRAdapterImpl";
      EXPECT_TRUE(destructor || !run.empty()) << "a failed JNI call was not reported";
      // A failed frame push (the first call) is the failing function's own DRX3702, from the line
      // that opened the frame.
      if ((n == 1 && !destructor) || run.find("PushLocalFrame") != std::string::npos) {
        EXPECT_THAT(run, ::testing::EndsWith(" DRX3702 4 PushLocalFrame entered traced"));
        EXPECT_THAT(raisingLine_, ::testing::ContainsRegex("KorJniCallScope java\\(|korRaisePushFailure\\("));
        EXPECT_THAT(
            run, ::testing::AnyOf(::testing::HasSubstr(" KorISRAdapterImpl::" + function + " "),
                                  ::testing::HasSubstr(" KorISRAdapterJniManager::processKnownException ")));
      }
      if (HasFailure()) {
        return adapter.reset();
      }
    }
  }
  adapter.reset();
  // Both reads of a known exception's inserts failed at some point, each under its own name.
  EXPECT_EQ(unreadInserts_, (std::set<std::string>{"DRX4374: CallObjectMethod() failed",
                                                   "DRX4374: GetObjectArrayElement() failed"}));
}

INSTANTIATE_TEST_SUITE_P(PendingException, JniFaultSweep,
                         ::testing::Values("java/lang/OutOfMemoryError", "java/lang/IllegalStateException"));

} // namespace
