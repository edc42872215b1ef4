#include "RegistryTestSupport.hpp"

#include <KorCommonStartParameters.hpp>
#include <KorISRAdapter.hpp>
#include <KorISRAdapterStub.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using testing::IsEmpty;

// Only the stub branch is exercised: creating the Java-backed adapter needs a JVM.
class KorISRAdapterFactoryTest : public KorTraceFixture {
protected:
  void SetUp() override {
    KorTraceFixture::SetUp();
    KorCommonStartParameters::setContainerInfo({1});
    KorCommonStartParameters::setCommonStartParameters({w("broker")});
  }
  // Leaves no instance behind for the next test in the same process.
  void TearDown() override {
    KorCommonStartParameters::setContainerInfo({1});
    delete KorISRAdapter::isrAdapter();
    KorTraceFixture::TearDown();
  }

  static std::string address(const void* object) { return KorLogInsert(object).text().toUtf8(); }
};

TEST_F(KorISRAdapterFactoryTest, StubContainerGetsOneEmptyStubTracedTwiceOver) {
  KorISRAdapter* adapter = KorISRAdapter::isrAdapter();
  auto* stub = dynamic_cast<KorISRAdapterStub*>(adapter);
  ASSERT_NE(stub, nullptr);
  KorWstring names;
  EXPECT_THAT(stub->getBTDNames(names), IsEmpty());
  KorWstring policyNames;
  EXPECT_THAT(stub->getPolicyNames(w("T"), policyNames), IsEmpty());

  const std::vector<KorLogRecord> records = capture->records();
  ASSERT_GE(records.size(), 4U);
  EXPECT_EQ((std::vector<std::string>{describe(records[0]), describe(records[1]), describe(records[2]),
                                      describe(records[3])}),
            (std::vector<std::string>{"entry KorISRAdapter::isrAdapter",
                                      "entry KorISRAdapter::isrAdapter \"broker\"",
                                      "exit KorISRAdapter::isrAdapter \"" + address(adapter) + "\"",
                                      "exit KorISRAdapter::isrAdapter"}));
  EXPECT_EQ(records[2].token, records[1].token);
  EXPECT_EQ(records[3].token, records[0].token);

  // Once set, the container information is not read again.
  KorCommonStartParameters::setContainerInfo({0});
  EXPECT_EQ(KorISRAdapter::isrAdapter(w("other name")), adapter);
  EXPECT_EQ(KorISRAdapter::isrAdapter(), adapter);
}

TEST_F(KorISRAdapterFactoryTest, InstancePointerFollowsConstructionAndDestruction) {
  KorISRAdapter* first = KorISRAdapter::isrAdapter();
  KorWstring uri;
  first->createBTD(w("in first"), w("<c/>"), uri);
  {
    KorISRAdapterStub outsider;
    EXPECT_EQ(KorISRAdapter::isrAdapter(), &outsider);
  }
  // The outsider's destruction cleared the instance although the first lives on.
  KorISRAdapter* second = KorISRAdapter::isrAdapter();
  EXPECT_NE(second, first);
  EXPECT_FALSE(second->btdExists(w("in first")));

  // Destroying any adapter clears the instance, even one that no longer is it.
  delete first;
  KorISRAdapter* third = KorISRAdapter::isrAdapter();
  EXPECT_NE(third, second);
  delete second;
  delete third;

  // Deleting the instance makes the next call build a fresh, empty one.
  KorISRAdapter* fourth = KorISRAdapter::isrAdapter();
  fourth->createBTD(w("in fourth"), w("<c/>"), uri);
  delete fourth;
  EXPECT_FALSE(KorISRAdapter::isrAdapter()->btdExists(w("in fourth")));
}

TEST_F(KorISRAdapterFactoryTest, ResetEmptiesBothStoresAndKeepsTheInstance) {
  auto* stub = dynamic_cast<KorISRAdapterStub*>(KorISRAdapter::isrAdapter());
  ASSERT_NE(stub, nullptr);
  KorWstring uri;
  stub->createBTD(w("Orders"), w("<c/>"), uri);
  uri = KorWstring();
  stub->createPolicy(w("Security"), w("Gold"), w("<p/>"), uri);

  stub->reset();

  EXPECT_FALSE(stub->btdExists(w("Orders")));
  EXPECT_FALSE(stub->policyExists(w("Security"), w("Gold")));
  KorWstring names = w("stale");
  EXPECT_THAT(stub->getBTDNames(names), IsEmpty());
  EXPECT_EQ(names.toUtf8(), "");
  EXPECT_EQ(KorISRAdapter::isrAdapter(), stub);
  // The emptied stores accept the same keys again.
  uri = KorWstring();
  stub->createPolicy(w("Security"), w("Gold"), w("<p/>"), uri);
}

} // namespace
