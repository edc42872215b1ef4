#include "KorISRAdapterImpl.hpp"
#include "TestJvm.hpp"

#include <KorCommonStartParameters.hpp>
#include <KorException.hpp>
#include <KorISRAdapterStub.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>

using ::testing::ElementsAre;

namespace {

KorWstring text(const char* utf8) {
  return KorWstring::fromUtf8(utf8);
}

std::string joined(const std::vector<KorWstring>& texts) {
  std::string result;
  for (const auto& t : texts) {
    result += "[" + t.toUtf8() + "]";
  }
  return result;
}

class JavaAdapterTest : public JvmTest {
protected:
  void SetUp() override {
    JvmTest::SetUp();
    TestJvm::clearReferenceRegistry();
  }
};

TEST_F(JavaAdapterTest, TheFactoryMakesTheJavaBackedAdapterOutsideStubContainers) {
  for (std::int32_t kind : {0, 2, -1}) {
    KorCommonStartParameters::setContainerInfo({kind});
    KorCommonStartParameters::setCommonStartParameters({text("broker")});
    std::unique_ptr<KorISRAdapter> adapter(KorISRAdapter::isrAdapter());
    ASSERT_NE(dynamic_cast<KorISRAdapterImpl*>(adapter.get()), nullptr) << "kind " << kind;
    EXPECT_EQ(KorISRAdapter::isrAdapter(text("ignored")), adapter.get());
    EXPECT_FALSE(adapter->btdExists(text("Orders")));
  }
}

// The same script on both registries; it keeps to what the two agree on:
// successful calls, no create of an existing item, non-blank documents.
std::vector<std::string> runScript(KorISRAdapter& registry) {
  std::vector<std::string> log;
  KorWstring uri, content, document, names;
  auto record = [&log](const std::string& line) { log.push_back(line); };

  registry.createBTD(text("Orders"), text("<orders/>"), uri);
  record("createBTD " + uri.toUtf8());
  record("btdExists " + std::to_string(registry.btdExists(text("Orders"))) +
         std::to_string(registry.btdExists(text("orders"))));
  uri = text("/elsewhere");
  registry.updateBTD(text("Orders"), text("<orders v='2'/>"), uri);
  record("updateBTD " + uri.toUtf8());
  content = text("ignored");
  registry.getBTD(text("Orders"), content, uri);
  record("getBTD " + content.toUtf8() + " " + uri.toUtf8());
  for (const char* name : {"b", "B", "a", "ab", "\xF0\x9F\x98\x80", "\xEF\xBF\xBD"}) {
    KorWstring ignored;
    registry.createBTD(text(name), text("<x/>"), ignored);
  }
  std::vector<KorWstring> uris{text("kept")};
  registry.listBTDs(uris);
  record("listBTDs " + joined(uris));
  names = text("replaced");
  record("getBTDNames " + joined(registry.getBTDNames(names)) + " " + names.toUtf8());

  registry.createPolicy(text("Security"), text("Gold"), text("<gold/>"), uri = KorWstring());
  record("createPolicy " + uri.toUtf8());
  registry.createPolicy(text("Security"), text("Silver"), text("<silver/>"), uri = KorWstring());
  registry.createPolicy(text("Other"), text("Gold"), text("<other/>"), uri = KorWstring());
  record("policyExists " + std::to_string(registry.policyExists(text("Security"), text("Gold"))) +
         std::to_string(registry.policyExists(text("Security"), text("Bronze"))) +
         std::to_string(registry.policyExists(text("security"), text("Gold"))));
  registry.updatePolicy(text("Security"), text("Gold"), text("<gold v='2'/>"), uri = text("/elsewhere"));
  record("updatePolicy " + uri.toUtf8());
  registry.getPolicy(text("Security"), text("Gold"), document, uri);
  record("getPolicy " + document.toUtf8() + " " + uri.toUtf8());
  names = KorWstring();
  record("getPolicyNames " + joined(registry.getPolicyNames(text("Security"), names)) + " " + names.toUtf8());
  registry.deletePolicy(text("Security"), text("Gold"));
  record("after deletePolicy " + std::to_string(registry.policyExists(text("Security"), text("Gold"))) +
         std::to_string(registry.policyExists(text("Other"), text("Gold"))));
  registry.deleteBTD(text("Orders"));
  record("after deleteBTD " + std::to_string(registry.btdExists(text("Orders"))));
  return log;
}

TEST_F(JavaAdapterTest, AgreesWithTheInMemoryRegistry) {
  std::vector<std::string> inMemory;
  {
    KorISRAdapterStub stub;
    inMemory = runScript(stub);
  }
  KorISRAdapterImpl java(text("parity"));
  EXPECT_EQ(runScript(java), inMemory);
}

TEST_F(JavaAdapterTest, TheReservedPolicyTypeIsServedByTheBTDOperations) {
  KorISRAdapterImpl adapter(text("reserved"));
  const KorWstring reserved = text("BusinessTransactionDefinition");
  KorWstring uri, names;
  adapter.createPolicy(reserved, text("Orders"), text("<o/>"), uri);
  EXPECT_EQ(uri.toUtf8(), "/apiv1/business/businesstransactions/Orders");
  EXPECT_TRUE(adapter.btdExists(text("Orders")));
  EXPECT_TRUE(adapter.policyExists(reserved, text("Orders")));
  EXPECT_FALSE(adapter.policyExists(text("businessTransactionDefinition"), text("Orders")));
  EXPECT_THAT(adapter.getPolicyNames(reserved, names), ElementsAre(text("Orders")));
  adapter.deletePolicy(reserved, text("Orders"));
  EXPECT_FALSE(adapter.btdExists(text("Orders")));
}

TEST_F(JavaAdapterTest, AKnownJavaFailureKeepsItsOwnNumberAndLeavesOutParametersAlone) {
  KorISRAdapterImpl adapter(text("known"));
  KorWstring content = text("before"), uri = text("before");
  try {
    adapter.getBTD(text("Missing"), content, uri);
    FAIL() << "no exception raised";
  } catch (const KorRecoverableException& error) {
    EXPECT_EQ(error.messageId(), "") << "a number of the Java side's own, not a DRX message";
    EXPECT_EQ(error.function(), "KorISRAdapterImpl::getBTD");
    EXPECT_THAT(error.textInserts(), testing::Contains(text("Missing")));
  }
  EXPECT_EQ(content.toUtf8(), "before");
  EXPECT_EQ(uri.toUtf8(), "before");
}

TEST_F(JavaAdapterTest, ServicesAndAdministrativeRequestsReachJava) {
  KorISRAdapterImpl adapter(text("services"));
  adapter.createService(text("s2"), text("ns2"), text("<d2/>"));
  adapter.createService(text("s1"), text("ns1"), text("<d1/>"));
  EXPECT_TRUE(adapter.serviceExists(text("s1"), text("ns1")));
  EXPECT_FALSE(adapter.serviceExists(text("s1"), text("other")));
  KorISRService service(text("old"), text("old"), text("old"));
  EXPECT_FALSE(adapter.getService(text("missing"), service));
  EXPECT_EQ(service.name.toUtf8(), "old");
  ASSERT_TRUE(adapter.getService(text("s1"), service));
  EXPECT_EQ(service.name.toUtf8() + service.serviceNamespace.toUtf8() + service.document.toUtf8(),
            "s1ns1<d1/>");
  std::vector<KorISRService> services = adapter.getServices();
  ASSERT_EQ(services.size(), 2U);
  EXPECT_EQ(services[0].name.toUtf8() + services[0].serviceNamespace.toUtf8() + services[0].document.toUtf8(),
            "s1ns1");
  EXPECT_EQ(services[1].logSourceName().toUtf8(), "KorISRService");
  adapter.deleteService(text("s1"));
  EXPECT_FALSE(adapter.serviceExists(text("s1"), text("ns1")));

  adapter.setRepositoryDetails(text("1"), text("2"), text("3"), true, text("5"), text("6"), -1);
  adapter.migratePoliciesFromISR();
  adapter.stopMessageFlow(text("a"), text(""), text("c"), text("d"));
  jobject java = TestJvm::callStatic("com/vantor/broker/isr/ISRAdapter", "getInstance",
                                     "()Lcom/vantor/broker/isr/ISRAdapter;");
  jobject details =
      TestJvm::callObject(java, "repositoryDetails", "()Lcom/vantor/broker/isr/RepositoryDetails;");
  EXPECT_EQ(TestJvm::utf8(TestJvm::callObject(details, "toString", "()Ljava/lang/String;")),
            "RepositoryDetails[text1=1, text2=2, text3=3, flag=true, text5=5, text6=6, number=-1]");
}

// Every operation, many times, with successes and known failures: the
// global references made through JNI and the threads' frame depths end
// where they started.
TEST_F(JavaAdapterTest, RepeatedOperationsLeakNoReference) {
  KorISRAdapterImpl adapter(text("resources"));
  const KorWstring type = text("Security");
  auto work = [&](int thread, int rounds) {
    const int framesBefore = TestJvm::localFrameDepth();
    for (int i = 0; i < rounds; ++i) {
      KorWstring name = text(("n" + std::to_string(thread) + "-" + std::to_string(i % 50)).c_str());
      KorWstring uri, content, names;
      std::vector<KorWstring> uris;
      adapter.createBTD(name, text("<b/>"), uri);
      adapter.getBTD(name, content, uri);
      adapter.btdExists(name);
      adapter.createPolicy(type, name, text("<p/>"), uri);
      adapter.getPolicy(type, name, content, uri);
      adapter.getPolicyNames(type, names);
      adapter.deletePolicy(type, name);
      adapter.deleteBTD(name);
      adapter.listBTDs(uris);
      if (i % 20 == 0) {
        try {
          adapter.deleteBTD(name);
        } catch (const KorRecoverableException&) {
        }
      }
    }
    EXPECT_EQ(TestJvm::localFrameDepth(), framesBefore);
  };
  const long globalsBefore = TestJvm::liveGlobalReferences();
  std::thread other(work, 1, 5000);
  work(0, 5000);
  other.join();
  EXPECT_EQ(TestJvm::liveGlobalReferences(), globalsBefore);
}

} // namespace
