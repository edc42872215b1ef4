#include "KorISRAdapterImpl.hpp"
#include "TestJvm.hpp"

#include <KorException.hpp>
#include <KorLog.hpp>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace {

KorWstring text(const char* utf8) {
  return KorWstring::fromUtf8(utf8);
}

// What the Java side does at the armed point; the values of the test-only
// fault registry's Faults class.
enum class Outcome { known = 1, other = 2, fatal = 3, null = 4, nullElement = 5 };

void arm(const char* point, Outcome outcome) {
  JNIEnv* env = TestJvm::env();
  jobjectArray inserts = env->NewObjectArray(1, env->FindClass("java/lang/Object"), env->NewStringUTF("i1"));
  TestJvm::callStatic("legiorrug/faults/Faults", "arm",
                      "(Ljava/lang/String;IJLjava/lang/String;[Ljava/lang/Object;)V", TestJvm::string(point),
                      static_cast<jint>(outcome), jlong{3001}, TestJvm::string("fault text"), inserts);
}

void disarm() {
  TestJvm::callStatic("legiorrug/faults/Faults", "disarm", "()V");
}

// Every out-parameter an operation can have, each holding a text of its own
// before the call, rendered as one line so that a row can say what a
// failure leaves changed.
struct OutParameters {
  KorWstring uri = text("uri?");
  KorWstring content = text("content?");
  KorWstring document = text("document?");
  KorWstring names = text("names?");
  std::vector<KorWstring> uris{text("kept")};
  KorISRService service{text("name?"), text("namespace?"), text("document?")};

  std::string render() const {
    std::string line = "uri=" + uri.toUtf8() + " content=" + content.toUtf8() +
                       " document=" + document.toUtf8() + " names=" + names.toUtf8() + " uris=";
    for (const auto& entry : uris) {
      line += entry.toUtf8() + ",";
    }
    return line + " service=" + service.name.toUtf8() + "/" + service.serviceNamespace.toUtf8() + "/" +
           service.document.toUtf8();
  }
};

const std::string untouched = OutParameters().render();

using Operation = std::function<void(KorISRAdapter&, OutParameters&)>;

struct Call {
  const char* operation;
  Operation run;
  const char* point;  // the Java method or constructor that fails
  const char* label;  // the call label the failure must carry
  bool nullIsAnError; // a null answer there raises DRX3703
  std::string outAfterFailure = untouched;
};

const KorWstring orders = text("Orders");
const KorWstring security = text("Security");
const KorWstring gold = text("Gold");

const Operation createBTD = [](KorISRAdapter& a, OutParameters& o) {
  a.createBTD(orders, text("<o/>"), o.uri);
};
const Operation updateBTD = [](KorISRAdapter& a, OutParameters& o) {
  a.updateBTD(orders, text("<o/>"), o.uri);
};
const Operation getBTD = [](KorISRAdapter& a, OutParameters& o) { a.getBTD(orders, o.content, o.uri); };
const Operation deleteBTD = [](KorISRAdapter& a, OutParameters&) { a.deleteBTD(orders); };
const Operation btdExists = [](KorISRAdapter& a, OutParameters&) { a.btdExists(orders); };
const Operation listBTDs = [](KorISRAdapter& a, OutParameters& o) { a.listBTDs(o.uris); };
const Operation getBTDNames = [](KorISRAdapter& a, OutParameters& o) { a.getBTDNames(o.names); };
const Operation createPolicy = [](KorISRAdapter& a, OutParameters& o) {
  a.createPolicy(security, gold, text("<p/>"), o.uri);
};
const Operation updatePolicy = [](KorISRAdapter& a, OutParameters& o) {
  a.updatePolicy(security, gold, text("<p/>"), o.uri);
};
const Operation getPolicy = [](KorISRAdapter& a, OutParameters& o) {
  a.getPolicy(security, gold, o.document, o.uri);
};
const Operation deletePolicy = [](KorISRAdapter& a, OutParameters&) { a.deletePolicy(security, gold); };
const Operation policyExists = [](KorISRAdapter& a, OutParameters&) { a.policyExists(security, gold); };
const Operation getPolicyNames = [](KorISRAdapter& a, OutParameters& o) {
  a.getPolicyNames(security, o.names);
};
const Operation createService = [](KorISRAdapter& a, OutParameters&) {
  a.createService(text("s"), text("ns"), text("<s/>"));
};
const Operation serviceExists = [](KorISRAdapter& a, OutParameters&) {
  a.serviceExists(text("s"), text("ns"));
};
const Operation getService = [](KorISRAdapter& a, OutParameters& o) { a.getService(text("s"), o.service); };
const Operation deleteService = [](KorISRAdapter& a, OutParameters&) { a.deleteService(text("s")); };
const Operation getServices = [](KorISRAdapter& a, OutParameters&) { a.getServices(); };
const Operation setRepositoryDetails = [](KorISRAdapter& a, OutParameters&) {
  a.setRepositoryDetails(text("1"), text("2"), text("3"), true, text("5"), text("6"), 7);
};
const Operation migrate = [](KorISRAdapter& a, OutParameters&) { a.migratePoliciesFromISR(); };
const Operation stopFlow = [](KorISRAdapter& a, OutParameters&) {
  a.stopMessageFlow(text("1"), text("2"), text("3"), text("4"));
};
const Operation construct = [](KorISRAdapter&, OutParameters&) {
  KorISRAdapterImpl another(text("another"));
};

std::string withUri(const char* uri) {
  OutParameters out;
  out.uri = text(uri);
  return out.render();
}

std::string withNames(const char* names) {
  OutParameters out;
  out.names = text(names);
  return out.render();
}

const std::vector<Call> calls = {
    {"createBTD", createBTD, "BTDDocument.<init>", "NewObject", true},
    {"createBTD", createBTD, "ISRAdapter.createBTD", "method_com_vantor_broker_isr_ISRAdapter_createBTD",
     false},
    {"createBTD", createBTD, "BTDDocument.getUri", "method_com_vantor_broker_isr_BTDDocument_getUri", true},
    {"updateBTD", updateBTD, "BTDDocument.<init>", "NewObject", true},
    {"updateBTD", updateBTD, "ISRAdapter.updateBTD", "method_com_vantor_broker_isr_ISRAdapter_updateBTD",
     false},
    {"updateBTD", updateBTD, "BTDDocument.getUri", "method_com_vantor_broker_isr_BTDDocument_getUri", true},
    {"getBTD", getBTD, "BTDDocument.<init>", "NewObject", true},
    {"getBTD", getBTD, "ISRAdapter.getBTD", "method_com_vantor_broker_isr_ISRAdapter_getBTD", false},
    {"getBTD", getBTD, "BTDDocument.getUri", "method_com_vantor_broker_isr_BTDDocument_getUri", true},
    {"getBTD", getBTD, "BTDDocument.getContent", "method_com_vantor_broker_isr_BTDDocument_getContent", true,
     withUri("/fault/btd/Orders")},
    {"deleteBTD", deleteBTD, "ISRAdapter.deleteBTD", "method_com_vantor_broker_isr_ISRAdapter_deleteBTD",
     false},
    {"btdExists", btdExists, "ISRAdapter.btdExists", "PolicyRespositoryManager_btdExists", false},
    {"listBTDs", listBTDs, "ISRAdapter.getBTDs", "method_com_vantor_broker_isr_ISRAdapter_getBTDs", false},
    {"listBTDs", listBTDs, "BTDDocument.getUri", "method_com_vantor_broker_isr_BTDDocument_getUri", true},
    {"getBTDNames", getBTDNames, "ISRAdapter.getBTDs", "method_com_vantor_broker_isr_ISRAdapter_getBTDs",
     false},
    {"getBTDNames", getBTDNames, "BTDDocument.getName", "method_com_vantor_broker_isr_BTDDocument_getName",
     true, withNames("")},
    {"createPolicy", createPolicy, "ISRPolicy.<init>", "NewObject", true},
    {"createPolicy", createPolicy, "ISRPolicy.validateContent", "ISRPolicy_validateContent", false},
    {"createPolicy", createPolicy, "ISRAdapter.createPolicy", "PolicyRespositoryManager_createPolicy", false},
    {"createPolicy", createPolicy, "ISRPolicy.getUri", "PolicyRespositoryManager_createPolicy", true},
    {"updatePolicy", updatePolicy, "ISRPolicy.<init>", "NewObject", true},
    {"updatePolicy", updatePolicy, "ISRPolicy.validateContent", "ISRPolicy_validateContent", false},
    {"updatePolicy", updatePolicy, "ISRAdapter.updatePolicy", "PolicyRespositoryManager_updatePolicy", false},
    {"updatePolicy", updatePolicy, "ISRPolicy.getUri", "PolicyRespositoryManager_updatePolicy", true},
    {"getPolicy", getPolicy, "ISRPolicy.<init>", "NewObject", true},
    {"getPolicy", getPolicy, "ISRAdapter.getPolicy", "PolicyRespositoryManager_getPolicy", false},
    {"getPolicy", getPolicy, "ISRPolicy.getUri", "PolicyRespositoryManager_getPolicy", true},
    {"getPolicy", getPolicy, "ISRPolicy.getDocument", "PolicyRespositoryManager_getPolicy", true,
     withUri("/fault/policy/Security/Gold")},
    {"deletePolicy", deletePolicy, "ISRPolicy.<init>", "NewObject", true},
    {"deletePolicy", deletePolicy, "ISRAdapter.deletePolicy", "PolicyRespositoryManager_deletePolicy", false},
    {"policyExists", policyExists, "ISRPolicy.<init>", "NewObject", true},
    {"policyExists", policyExists, "ISRAdapter.policyExists", "PolicyRespositoryManager_policyExists", false},
    {"getPolicyNames", getPolicyNames, "ISRAdapter.getPolicyNames", "PolicyRespositoryManager_getPolicyNames",
     true},
    {"getPolicyNames", getPolicyNames, "ISRAdapter.getPoliciesWithoutDoc",
     "method_com_vantor_broker_isr_ISRAdapter_getPoliciesWithoutDoc", false, withNames("p1 p2")},
    {"getPolicyNames", getPolicyNames, "ISRPolicy.getName", "method_com_vantor_broker_isr_ISRPolicy_getName",
     false, withNames("p1 p2")},
    {"createService", createService, "ISRService.<init>3", "NewObject", true},
    {"createService", createService, "ISRAdapter.createService",
     "method_com_vantor_broker_isr_ISRAdapter_createService", false},
    {"serviceExists", serviceExists, "ISRService.<init>2", "NewObject", true},
    {"serviceExists", serviceExists, "ISRAdapter.serviceExists",
     "method_com_vantor_broker_isr_ISRAdapter_serviceExists", false},
    {"getService", getService, "ISRAdapter.getService", "method_com_vantor_broker_isr_ISRAdapter_getService",
     false},
    {"getService", getService, "ISRService.getName", "method_com_vantor_broker_isr_ISRService_getName",
     false},
    {"getService", getService, "ISRService.getNamespace",
     "method_com_vantor_broker_isr_ISRSerivce_getNamespace", false},
    {"getService", getService, "ISRService.getDocument",
     "method_com_vantor_broker_isr_ISRService_getDocument", false},
    {"deleteService", deleteService, "ISRAdapter.deleteService",
     "method_com_vantor_broker_isr_ISRAdapter_deleteService", false},
    {"getServices", getServices, "ISRAdapter.getServicesWithoutDoc",
     "method_com_vantor_broker_isr_ISRAdapter_getServicesWithoutDoc", false},
    {"getServices", getServices, "ISRService.getName", "method_com_vantor_broker_isr_ISRService_getName",
     false},
    {"getServices", getServices, "ISRService.getNamespace",
     "method_com_vantor_broker_isr_ISRSerivce_getNamespace", false},
    {"setRepositoryDetails", setRepositoryDetails, "ISRAdapter.setRepositoryDetails",
     "ISRAdapter_setRepositoryDetails", false},
    {"migratePoliciesFromISR", migrate, "ISRMigration.getInstance", "ISRMigration_getInstance", true},
    {"migratePoliciesFromISR", migrate, "ISRMigration.migrateISR",
     "method_com_vantor_broker_isr_migration_ISRMigration_migrateISR", false},
    {"stopMessageFlow", stopFlow, "MessageFlowProxy.stopMessageFlow", "MessageFlowProxy_stopMessageFlow",
     false},
    {"KorISRAdapterImpl", construct, "ISRAdapter.getInstance", "ISRAdapter_getInstance", true},
};

struct Expected {
  bool fatal;
  std::uint32_t number;
  std::vector<std::string> inserts; // leading inserts; the Java texts that follow are checked apart
};

Expected expectedFor(Outcome outcome, const std::string& label) {
  switch (outcome) {
  case Outcome::known:
    return {false, 3001, {"fault text", "i1"}};
  case Outcome::other:
    return {false, 0xC0000E75, {"Error Making JNI Call: " + label, label, "java.lang.IllegalStateException"}};
  case Outcome::fatal:
    return {true,
            0xC0000E76,
            {"Fatal Error Making JNI Call: " + label, label, "legiorrug.faults.FatalTestError"}};
  default:
    return {false, 0xC0000E77, {"Unexpected NULL returned from JNI Call in: " + label, label}};
  }
}

std::vector<std::string> leadingInserts(const KorException& error, std::size_t count) {
  std::vector<std::string> result;
  for (const auto& insert : error.textInserts()) {
    if (result.size() < count) {
      result.push_back(insert.toUtf8());
    }
  }
  return result;
}

class FaultTest : public JvmTest {
protected:
  void SetUp() override {
    JvmTest::SetUp();
    adapter = std::make_unique<KorISRAdapterImpl>(text("faults"));
  }
  void TearDown() override {
    disarm();
    adapter.reset();
    JvmTest::TearDown();
  }

  // Runs op once with the fault in place and checks what it raised.
  void expectFailure(const Call& call, Outcome outcome) {
    SCOPED_TRACE(std::string(call.operation) + " at " + call.point + " -> " +
                 std::to_string(static_cast<int>(outcome)));
    if (outcome == Outcome::null && std::string(call.label) == "NewObject") {
      TestJvm::failNextNewObject();
    } else {
      arm(call.point, outcome);
    }
    OutParameters out;
    const int frames = TestJvm::localFrameDepth();
    const Expected expected = expectedFor(outcome, call.label);
    try {
      call.run(*adapter, out);
      ADD_FAILURE() << "no exception raised";
    } catch (const KorException& error) {
      EXPECT_EQ(error.isFatal(), expected.fatal);
      EXPECT_EQ(error.messageNumber(), expected.number);
      EXPECT_EQ(leadingInserts(error, expected.inserts.size()), expected.inserts);
      EXPECT_EQ(error.function(), std::string("KorISRAdapterImpl::") + call.operation);
      EXPECT_EQ(error.sourceFile(), "src/registry/KorISRAdapterImpl");
    }
    disarm();
    EXPECT_FALSE(env->ExceptionCheck());
    EXPECT_EQ(TestJvm::localFrameDepth(), frames);
    EXPECT_EQ(out.render(), call.outAfterFailure);
    EXPECT_TRUE(adapter->btdExists(orders)) << "the adapter works after the failure";
  }

  std::unique_ptr<KorISRAdapterImpl> adapter;
};

TEST_F(FaultTest, EveryCallReportsEveryFailureUnderItsOwnLabel) {
  for (const Call& call : calls) {
    for (Outcome outcome : {Outcome::known, Outcome::other, Outcome::fatal}) {
      expectFailure(call, outcome);
    }
    if (call.nullIsAnError) {
      expectFailure(call, Outcome::null);
    }
  }
}

// A null where the library reads an optional text or a list is no error.
TEST_F(FaultTest, NullsThatMeanNothingOrEmpty) {
  OutParameters out;
  arm("ISRAdapter.getService", Outcome::null);
  EXPECT_FALSE(adapter->getService(text("s"), out.service));
  arm("ISRService.getNamespace", Outcome::null);
  ASSERT_TRUE(adapter->getService(text("s"), out.service));
  EXPECT_EQ(out.service.serviceNamespace.toUtf8(), "");
  arm("ISRPolicy.getName", Outcome::null);
  EXPECT_EQ(adapter->getPolicyNames(security, out.names),
            (std::vector<KorWstring>{KorWstring(), KorWstring()}));
  arm("ISRAdapter.getBTDs", Outcome::null);
  adapter->listBTDs(out.uris);
  EXPECT_EQ(out.uris.size(), 1U);
  arm("ISRAdapter.getServicesWithoutDoc", Outcome::nullElement);
  EXPECT_EQ(adapter->getServices().size(), 1U) << "the null element is skipped";
  arm("ISRAdapter.getPoliciesWithoutDoc", Outcome::nullElement);
  EXPECT_EQ(adapter->getPolicyNames(security, out.names).size(), 1U);
}

TEST_F(FaultTest, ANullBTDElementHasNoURI) {
  arm("ISRAdapter.getBTDs", Outcome::nullElement);
  OutParameters out;
  try {
    adapter->listBTDs(out.uris);
    FAIL() << "no exception raised";
  } catch (const KorRecoverableException& error) {
    EXPECT_EQ(error.messageNumber(), 0xC0000E77U);
    EXPECT_EQ(leadingInserts(error, 2)[1], "method_com_vantor_broker_isr_BTDDocument_getUri");
  }
  EXPECT_EQ(out.uris.size(), 2U) << "the URI of the element before stays appended";
}

TEST_F(FaultTest, AFailedValidationNeverReachesTheRegistry) {
  arm("ISRPolicy.validateContent", Outcome::known);
  TestJvm::callStatic("legiorrug/faults/Faults", "resetCalls", "()V");
  OutParameters out;
  EXPECT_THROW(createPolicy(*adapter, out), KorRecoverableException);
  disarm();
  JNIEnv* jni = TestJvm::env();
  jclass faults = jni->FindClass("legiorrug/faults/Faults");
  jint calls =
      jni->CallStaticIntMethod(faults, jni->GetStaticMethodID(faults, "calls", "(Ljava/lang/String;)I"),
                               TestJvm::string("ISRAdapter.createPolicy"));
  ASSERT_FALSE(jni->ExceptionCheck());
  EXPECT_EQ(calls, 0);
}

struct TraceLevel {
  int filter;
  bool entryAndExit;
  bool throwingRecord;
};

TEST_F(FaultTest, TraceItemsFollowTheFilter) {
  for (const TraceLevel level :
       {TraceLevel{2, false, false}, TraceLevel{3, false, true}, TraceLevel{4, true, true}}) {
    SCOPED_TRACE(level.filter);
    auto capture = std::make_shared<KorLogCapture>();
    auto previous = KorLog::setSink(capture);
    KorLog::iEffectiveLogFilter = level.filter;
    arm("ISRAdapter.btdExists", Outcome::other);
    EXPECT_THROW(adapter->btdExists(orders), KorRecoverableException);
    disarm();
    adapter->btdExists(orders);
    KorLog::iEffectiveLogFilter = 0;
    KorLog::setSink(previous);
    bool entry = false;
    bool throwing = false;
    for (const auto& record : capture->records()) {
      entry = entry || record.kind == KorLogKind::debugEntry;
      throwing = throwing || (!record.inserts.empty() && record.inserts[0].toUtf8() == "Throwing exception" &&
                              record.function == "KorISRAdapterImpl::btdExists");
    }
    EXPECT_EQ(entry, level.entryAndExit);
    EXPECT_EQ(throwing, level.throwingRecord);
  }
}

} // namespace
