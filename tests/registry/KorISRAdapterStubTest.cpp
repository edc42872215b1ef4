#include "RegistryTestSupport.hpp"

#include <KorException.hpp>
#include <KorISRAdapterStub.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace {

using testing::IsEmpty;

const char* const btdMissing = "Business transation definition does not exist";
const char* const btdMissingForUpdate = "The specified business transaction definition does not exist";
const char* const policyPresent = "The specified policy already exists";
const char* const policyMissing = "The specified policy does not exist";

class KorISRAdapterStubTest : public KorTraceFixture {
protected:
  KorISRAdapterStub stub;
};

TEST_F(KorISRAdapterStubTest, CreateUpsertsBTDsButRefusesExistingPolicies) {
  struct Row {
    const char* what;
    std::function<void(const char* content, KorWstring& uri)> create;
    std::function<void(KorWstring& content, KorWstring& uri)> read;
    const char* generatedUri;
    bool upsert;
  };
  const Row rows[] = {
      {"BTD", [&](const char* content, KorWstring& uri) { stub.createBTD(w("Orders"), w(content), uri); },
       [&](KorWstring& content, KorWstring& uri) { stub.getBTD(w("Orders"), content, uri); },
       "/apiv1/business/businesstransactions/Orders", true},
      {"policy",
       [&](const char* content, KorWstring& uri) {
         stub.createPolicy(w("Security"), w("Gold"), w(content), uri);
       },
       [&](KorWstring& content, KorWstring& uri) { stub.getPolicy(w("Security"), w("Gold"), content, uri); },
       "/apiv1/policy/Security/Gold", false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    KorWstring uri;
    row.create("<first/>", uri);
    EXPECT_EQ(uri.toUtf8(), row.generatedUri);

    KorWstring secondUri = w("/other");
    if (row.upsert) {
      row.create("<second/>", secondUri);
    } else {
      EXPECT_THROW(row.create("<second/>", secondUri), KorRecoverableException);
    }
    // An upsert reports the URI fixed at creation; a refused create leaves the caller's.
    EXPECT_EQ(secondUri.toUtf8(), row.upsert ? row.generatedUri : "/other");

    KorWstring content;
    KorWstring storedUri;
    row.read(content, storedUri);
    EXPECT_EQ(content.toUtf8(), row.upsert ? "<second/>" : "<first/>");
    EXPECT_EQ(storedUri.toUtf8(), row.generatedUri);
  }
}

TEST_F(KorISRAdapterStubTest, UriIsGeneratedOnlyWhenEmptyAndNeverChangesAfterwards) {
  struct Row {
    const char* type; // null for a BTD
    const char* name;
    const char* passedUri;
    const char* storedUri;
  };
  const Row rows[] = {
      {nullptr, "Orders", "/x", "/x"},
      {nullptr, "", "", "/apiv1/business/businesstransactions/"},
      {nullptr, "a b/c", "", "/apiv1/business/businesstransactions/a b/c"},
      {"Security", "Silver", "not a uri", "not a uri"},
      {"", "", "", "/apiv1/policy//"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.type ? row.type : "BTD") + " " + row.name);
    KorWstring uri = w(row.passedUri);
    KorWstring updatedUri = w("/ignored");
    if (row.type == nullptr) {
      stub.createBTD(w(row.name), w("<c/>"), uri);
      stub.updateBTD(w(row.name), w("<d/>"), updatedUri);
    } else {
      stub.createPolicy(w(row.type), w(row.name), w("<c/>"), uri);
      stub.updatePolicy(w(row.type), w(row.name), w("<d/>"), updatedUri);
    }
    EXPECT_EQ(uri.toUtf8(), row.storedUri);
    EXPECT_EQ(updatedUri.toUtf8(), row.storedUri);
  }
}

TEST_F(KorISRAdapterStubTest, FailuresRaiseTracedAndLeaveOutParametersAlone) {
  KorWstring uri;
  stub.createBTD(w("Known"), w("<c/>"), uri);
  uri = KorWstring();
  stub.createPolicy(w("Security"), w("Gold"), w("<gold/>"), uri);
  capture->clear();

  struct Row {
    const char* function;
    std::function<void(KorWstring& content, KorWstring& uri)> call;
    std::uint32_t code;
    const char* messageId;
    const char* text;
    std::vector<std::string> keys;
  };
  const Row rows[] = {
      {"KorISRAdapterStub::getBTD",
       [&](KorWstring& c, KorWstring& u) { stub.getBTD(w("known"), c, u); },
       0xC0000840U,
       "DRX2112",
       btdMissing,
       {"known"}},
      {"KorISRAdapterStub::deleteBTD",
       [&](KorWstring&, KorWstring&) { stub.deleteBTD(w("")); },
       0xC0000840U,
       "DRX2112",
       btdMissing,
       {""}},
      {"KorISRAdapterStub::updateBTD",
       [&](KorWstring& c, KorWstring& u) { stub.updateBTD(w("Unknown"), c, u); },
       0xC0000841U,
       "DRX2113",
       btdMissingForUpdate,
       {"Unknown"}},
      {"KorISRAdapterStub::createPolicy",
       [&](KorWstring& c, KorWstring& u) { stub.createPolicy(w("Security"), w("Gold"), c, u); },
       0xC0000841U,
       "DRX2113",
       policyPresent,
       {"Security", "Gold"}},
      {"KorISRAdapterStub::updatePolicy",
       [&](KorWstring& c, KorWstring& u) { stub.updatePolicy(w("Security"), w("Silver"), c, u); },
       0xC0000841U,
       "DRX2113",
       policyMissing,
       {"Security", "Silver"}},
      {"KorISRAdapterStub::getPolicy",
       [&](KorWstring& c, KorWstring& u) { stub.getPolicy(w("Unknown"), w("Gold"), c, u); },
       0xC0000841U,
       "DRX2113",
       policyMissing,
       {"Unknown", "Gold"}},
      {"KorISRAdapterStub::deletePolicy",
       [&](KorWstring&, KorWstring&) { stub.deletePolicy(w("Audit"), w("Gold")); },
       0xC0000841U,
       "DRX2113",
       policyMissing,
       {"Audit", "Gold"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.function);
    capture->clear();
    KorWstring content = w("caller's content");
    KorWstring callerUri = w("caller's uri");
    try {
      row.call(content, callerUri);
      ADD_FAILURE() << "no exception";
      continue;
    } catch (const KorRecoverableException& error) {
      std::vector<std::string> inserts{row.text, row.text};
      inserts.insert(inserts.end(), row.keys.begin(), row.keys.end());
      EXPECT_EQ(error.messageNumber(), row.code);
      EXPECT_EQ(error.messageId(), row.messageId);
      EXPECT_EQ(error.sourceFile(), "src/registry/KorISRAdapterStub");
      EXPECT_EQ(error.function(), row.function);
      EXPECT_EQ(error.traceSource().toUtf8(), "KorDefaultLogSource");
      EXPECT_EQ(utf8(error.textInserts()), inserts);

      const std::vector<KorLogRecord> records = capture->records();
      ASSERT_EQ(records.size(), 2U) << testing::PrintToString(lines());
      EXPECT_EQ(records[0].kind, KorLogKind::entry);
      EXPECT_EQ(error.token(), records[0].token);
      std::vector<std::string> traced{"Throwing exception", "src/registry/KorISRAdapterStub",
                                      std::to_string(error.sourceLine()), row.messageId};
      traced.insert(traced.end(), inserts.begin(), inserts.end());
      EXPECT_EQ(records[1].kind, KorLogKind::trace);
      EXPECT_EQ(records[1].function, row.function);
      EXPECT_EQ(records[1].token, records[0].token);
      EXPECT_EQ(utf8(records[1].inserts), traced);
    }
    EXPECT_EQ(content.toUtf8(), "caller's content");
    EXPECT_EQ(callerUri.toUtf8(), "caller's uri");
  }

  // The refused create left the existing policy as it was.
  KorWstring document;
  stub.getPolicy(w("Security"), w("Gold"), document, uri);
  EXPECT_EQ(document.toUtf8(), "<gold/>");
}

TEST_F(KorISRAdapterStubTest, JoinedNames) {
  struct Row {
    bool policies; // getPolicyNames of type T, else getBTDNames
    std::vector<const char*> stored;
    const char* namesBefore;
    std::vector<std::string> expected;
    const char* joined;
  };
  const Row rows[] = {
      {false, {}, "stale", {}, ""},
      {false, {"b", "a"}, "stale", {"a", "b"}, "a b"},
      {false, {"", "a"}, "stale", {"", "a"}, "a"},
      {false, {"x y", "z"}, "", {"x y", "z"}, "x y z"},
      {true, {}, "kept", {}, "kept"},
      {true, {"b", "a"}, "", {"a", "b"}, "a b"},
      {true, {"b", "a"}, "x", {"a", "b"}, "x a b"},
      {true, {"", "a"}, "", {"", "a"}, "a"},
      {true, {"", "a"}, "x", {"", "a"}, "x  a"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.policies ? "policies" : "BTDs") + ", before: " + row.namesBefore);
    stub.reset();
    for (const char* name : row.stored) {
      KorWstring uri;
      if (row.policies) {
        stub.createPolicy(w("T"), w(name), w("<c/>"), uri);
      } else {
        stub.createBTD(w(name), w("<c/>"), uri);
      }
    }
    KorWstring names = w(row.namesBefore);
    const std::vector<KorWstring> result =
        row.policies ? stub.getPolicyNames(w("T"), names) : stub.getBTDNames(names);
    EXPECT_EQ(utf8(result), row.expected);
    EXPECT_EQ(names.toUtf8(), row.joined);
  }
}

TEST_F(KorISRAdapterStubTest, KeysAreExactAndPolicyTypesAreSeparate) {
  KorWstring uri;
  stub.createBTD(w("Orders"), w("<c/>"), uri);
  EXPECT_TRUE(stub.btdExists(w("Orders")));
  EXPECT_FALSE(stub.btdExists(w("orders")));
  EXPECT_FALSE(stub.btdExists(w("Orders ")));
  EXPECT_FALSE(stub.btdExists(w("")));

  for (const char* type : {"Security", "Audit", "BusinessTransactionDefinition"}) {
    uri = KorWstring();
    stub.createPolicy(w(type), w("Gold"), w(type), uri);
  }
  EXPECT_FALSE(stub.btdExists(w("Gold")));
  stub.deletePolicy(w("Security"), w("Gold"));
  EXPECT_FALSE(stub.policyExists(w("Security"), w("Gold")));
  KorWstring document;
  stub.getPolicy(w("Audit"), w("Gold"), document, uri);
  EXPECT_EQ(document.toUtf8(), "Audit");
  EXPECT_EQ(uri.toUtf8(), "/apiv1/policy/Audit/Gold");

  // A type whose last policy went behaves like one never used.
  EXPECT_THROW(stub.deletePolicy(w("Security"), w("Gold")), KorRecoverableException);
  KorWstring names;
  EXPECT_THAT(stub.getPolicyNames(w("Security"), names), IsEmpty());
}

TEST_F(KorISRAdapterStubTest, TraceItems) {
  struct Row {
    const char* what;
    std::function<void()> call;
    std::vector<std::string> expected;
  };
  KorWstring uri;
  stub.createPolicy(w("T"), w("P"), w("<p/>"), uri);
  KorWstring names = w("x");
  std::vector<KorWstring> uris;
  const Row rows[] = {
      {"create",
       [&] {
         uri = w("/u");
         stub.createBTD(w("Orders"), w("<c/>"), uri);
       },
       {"entry KorISRAdapterStub::createBTD \"Orders\" \"<c/>\" \"/u\"",
        "trace KorISRAdapterStub::createBTD \"Created new business transaction definition\" \"/u\"",
        "exit KorISRAdapterStub::createBTD"}},
      {"create again",
       [&] {
         uri = w("/v");
         stub.createBTD(w("Orders"), w("<d/>"), uri);
       },
       {"entry KorISRAdapterStub::createBTD \"Orders\" \"<d/>\" \"/v\"",
        "trace KorISRAdapterStub::createBTD \"Updated existing business transaction definition\" \"/u\"",
        "exit KorISRAdapterStub::createBTD"}},
      {"exists",
       [&] { stub.btdExists(w("Orders")); },
       {"entry KorISRAdapterStub::btdExists \"Orders\"", "exit KorISRAdapterStub::btdExists \"true\""}},
      {"list",
       [&] { stub.listBTDs(uris); },
       {"entry KorISRAdapterStub::listBTDs",
        "trace KorISRAdapterStub::listBTDs \"Adding URI to result\" \"/u\"",
        "exit KorISRAdapterStub::listBTDs"}},
      {"names",
       [&] { stub.getBTDNames(names); },
       {"entry KorISRAdapterStub::getBTDNames",
        "trace KorISRAdapterStub::getBTDNames \"Adding name to result\" \"Orders\"",
        "exit KorISRAdapterStub::getBTDNames"}},
      {"policy names",
       [&] { stub.getPolicyNames(w("T"), names); },
       {"entry KorISRAdapterStub::getPolicyNames \"T\" \"Orders\"",
        "exit KorISRAdapterStub::getPolicyNames \"1\""}},
      {"reset", [&] { stub.reset(); }, {"entry KorISRAdapter::reset", "exit KorISRAdapter::reset"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    capture->clear();
    row.call();
    EXPECT_EQ(lines(), row.expected);
  }

  KorLog::iEffectiveLogFilter = 2;
  capture->clear();
  stub.createBTD(w("Orders"), w("<c/>"), uri);
  KorWstring content;
  EXPECT_THROW(stub.getBTD(w("missing"), content, uri), KorRecoverableException);
  EXPECT_THAT(capture->records(), IsEmpty());
}

} // namespace
