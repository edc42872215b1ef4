#include "KorISRAdapterImpl.hpp"
#include "TestJvm.hpp"

#include <KorCommonStartParameters.hpp>
#include <KorException.hpp>
#include <KorISRAdapterStub.hpp>
#include <KorLog.hpp>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <memory>

// One case per row of tests/scenarios/*.jsonl. A row: "case" (its name),
// "registry" ("java", the default, or "stub"), "setup" (operations run
// first), "op" (the operation and its arguments, out-parameters' values
// before the call included), "java" (the recording registry's script,
// answers by call), "filter" (trace filter, default 4), and what comes out:
// "result", "out" (op after the call; default unchanged), "error" (see
// describe), "calls" (the Java calls with their arguments) and "trace" (the
// records, see describe). A row with "sites" stands for its generated fault
// cases (addFaultCases). LEGIORRUG_SCENARIO_PRINT=1 prints each row as run.
namespace {

using nlohmann::json;
using Texts = std::vector<KorWstring>;

KorWstring w(const std::string& utf8) {
  return KorWstring::fromUtf8(utf8);
}

std::string joined(const Texts& texts) {
  std::string line;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    line += (i == 0 ? "" : ",") + texts[i].toUtf8();
  }
  return line;
}

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  for (std::size_t start = 0, end = 0; start < text.size(); start = end + 1) {
    end = std::min(text.find(separator, start), text.size());
    parts.push_back(text.substr(start, end - start));
  }
  return parts;
}

Texts split(const KorWstring& list) {
  Texts texts;
  for (const auto& part : split(list.toUtf8(), ',')) {
    texts.push_back(w(part));
  }
  return texts;
}

std::string service(const KorISRService& s) {
  return s.name.toUtf8() + "/" + s.serviceNamespace.toUtf8() + "/" + s.document.toUtf8();
}

std::string flag(bool value) {
  return value ? "true" : "false";
}

// Each operation reads its arguments, out-parameters included, from a and
// writes the out-parameters back; a list out-parameter is one comma-joined text.
using Operation = std::function<std::string(KorISRAdapter&, Texts&)>;
const std::map<std::string, Operation> operations = {
    {"createBTD", [](KorISRAdapter& r, Texts& a) { return r.createBTD(a[0], a[1], a[2]), ""; }},
    {"updateBTD", [](KorISRAdapter& r, Texts& a) { return r.updateBTD(a[0], a[1], a[2]), ""; }},
    {"getBTD", [](KorISRAdapter& r, Texts& a) { return r.getBTD(a[0], a[1], a[2]), ""; }},
    {"deleteBTD", [](KorISRAdapter& r, Texts& a) { return r.deleteBTD(a[0]), ""; }},
    {"btdExists", [](KorISRAdapter& r, Texts& a) { return flag(r.btdExists(a[0])); }},
    {"listBTDs",
     [](KorISRAdapter& r, Texts& a) {
       Texts uris = split(a[0]);
       r.listBTDs(uris);
       a[0] = w(joined(uris));
       return "";
     }},
    {"getBTDNames", [](KorISRAdapter& r, Texts& a) { return "[" + joined(r.getBTDNames(a[0])) + "]"; }},
    {"createPolicy", [](KorISRAdapter& r, Texts& a) { return r.createPolicy(a[0], a[1], a[2], a[3]), ""; }},
    {"updatePolicy", [](KorISRAdapter& r, Texts& a) { return r.updatePolicy(a[0], a[1], a[2], a[3]), ""; }},
    {"getPolicy", [](KorISRAdapter& r, Texts& a) { return r.getPolicy(a[0], a[1], a[2], a[3]), ""; }},
    {"deletePolicy", [](KorISRAdapter& r, Texts& a) { return r.deletePolicy(a[0], a[1]), ""; }},
    {"policyExists", [](KorISRAdapter& r, Texts& a) { return flag(r.policyExists(a[0], a[1])); }},
    {"getPolicyNames",
     [](KorISRAdapter& r, Texts& a) { return "[" + joined(r.getPolicyNames(a[0], a[1])) + "]"; }},
    {"createService", [](KorISRAdapter& r, Texts& a) { return r.createService(a[0], a[1], a[2]), ""; }},
    {"serviceExists", [](KorISRAdapter& r, Texts& a) { return flag(r.serviceExists(a[0], a[1])); }},
    {"getService",
     [](KorISRAdapter& r, Texts& a) {
       KorISRService s(a[1], a[2], a[3]);
       bool found = r.getService(a[0], s);
       a = {a[0], s.name, s.serviceNamespace, s.document};
       return flag(found) + " " + s.logSourceName().toUtf8();
     }},
    {"deleteService", [](KorISRAdapter& r, Texts& a) { return r.deleteService(a[0]), ""; }},
    {"getServices",
     [](KorISRAdapter& r, Texts&) {
       std::string line;
       for (const auto& s : r.getServices()) {
         line += (line.empty() ? "" : ",") + service(s);
       }
       return "[" + line + "]";
     }},
    {"setRepositoryDetails",
     [](KorISRAdapter& r, Texts& a) {
       r.setRepositoryDetails(a[0], a[1], a[2], a[3].toUtf8() == "true", a[4], a[5],
                              std::stoi(a[6].toUtf8()));
       return "";
     }},
    {"migratePoliciesFromISR", [](KorISRAdapter& r, Texts&) { return r.migratePoliciesFromISR(), ""; }},
    {"stopMessageFlow",
     [](KorISRAdapter& r, Texts& a) { return r.stopMessageFlow(a[0], a[1], a[2], a[3]), ""; }},
    {"reset", [](KorISRAdapter& r, Texts&) { return dynamic_cast<KorISRAdapterStub&>(r).reset(), ""; }},
    {"construct", [](KorISRAdapter&, Texts&) { return KorISRAdapterImpl(w("another")), ""; }},
};

// "R|F number function: insert|insert", a nested item in braces.
std::string describe(const KorException& error) {
  char number[16];
  std::snprintf(number, sizeof number, "%#x", error.messageNumber());
  std::string line = std::string(error.isFatal() ? "F " : "R ") + number + " " + error.function() + ":";
  const char* separator = " ";
  for (const auto& insert : error.inserts()) {
    line += separator + (insert.isNested() ? "{" + describe(insert.nested()) + "}" : insert.text().toUtf8());
    separator = "|";
  }
  return line;
}

// "kind function: insert|insert"; the source line of a "Throwing exception"
// record reads L, so that rows survive edits elsewhere in the file.
std::string describe(const KorLogRecord& record) {
  static const char* const kinds[] = {"entry", "exit", "trace", "dEntry", "dExit", "dTrace", "error"};
  std::string line = std::string(kinds[static_cast<int>(record.kind)]) + " " + record.function;
  const char* separator = ": ";
  for (std::size_t i = 0; i < record.inserts.size(); ++i) {
    bool masked = i == 2 && record.inserts[0].toUtf8() == "Throwing exception";
    line += separator + (masked ? std::string("L") : record.inserts[i].toUtf8());
    separator = "|";
  }
  return line;
}

std::vector<json> rows;

std::string replaced(std::string text, const std::string& label, const std::string& function) {
  for (auto [from, to] : {std::pair{"{f}", function}, std::pair{"{l}", label}}) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from)) {
      text.replace(at, 3, to);
    }
  }
  return text;
}

// The generated cases of a row with "sites": for each site [Java call, call
// label, 1 when null is an error, out-parameters after the failure] the
// base row "of" with the site answering each outcome. Each case expects the
// calls up to the failing one, and at filter 3 only the raise's own record.
void addFaultCases(const json& row, const std::map<std::string, json>& bases) {
  struct Outcome {
    const char* answer;
    const char* error; // {f} the function, {l} the call label
    const char* drx;   // of the "Throwing exception" record; none for a known exception
  };
  static const Outcome outcomes[] = {
      {"known|3001|fault text|i1", "R 0xbb9 {f}: fault text|i1", nullptr},
      {"other", "R 0xc0000e75 {f}: Error Making JNI Call: {l}|{l}|java.lang.IllegalStateException|scripted",
       "DRX3701"},
      {"fatal", "F 0xc0000e76 {f}: Fatal Error Making JNI Call: {l}|{l}|java.lang.Error|scripted", "DRX3702"},
      {"null", "R 0xc0000e77 {f}: Unexpected NULL returned from JNI Call in: {l}|{l}", "DRX3703"}};
  const json& base = bases.at(row["of"]);
  const std::string op = base["op"][0];
  const std::string function = "KorISRAdapterImpl::" + (op == "construct" ? "KorISRAdapterImpl" : op);
  for (const json& site : row["sites"]) {
    const std::string call = site[0];
    for (const Outcome& outcome : outcomes) {
      const std::string answer = outcome.answer;
      if (answer == "null" && site[2] == 0) {
        continue;
      }
      json c = base;
      c.erase("result");
      c["case"] = row["case"].get<std::string>() + " " + call + " " + answer.substr(0, answer.find('|'));
      c["java"] = {{call, answer}};
      c["out"] = site.size() > 3 ? site[3] : base["op"];
      const std::string error = replaced(outcome.error, site[1], function);
      // Only the constructor writes a plain entry item, whose token its raise carries.
      c["error"] = error + (op == "construct" && outcome.drx != nullptr ? " #entry" : " #0");
      c["calls"] = json::array();
      for (const std::string line : base["calls"]) {
        const bool failing = line.rfind(call + "(", 0) == 0;
        // A constructor that NewObject answers null for never ran.
        if (!failing || answer != "null" || call.find("<init>") == std::string::npos) {
          c["calls"].push_back(line);
        }
        if (failing) {
          break;
        }
      }
      c["filter"] = 3;
      c["traceOf"] = function;
      c["trace"] = json::array();
      if (outcome.drx != nullptr) {
        c["trace"].push_back("trace " + function + ": Throwing exception|src/registry/KorISRAdapterImpl|L|" +
                             outcome.drx + "|" + error.substr(error.find(": ") + 2));
      }
      rows.push_back(c);
    }
  }
}

std::vector<json> loadRows() {
  std::map<std::string, json> bases;
  for (const char* file : {"stub.jsonl", "java.jsonl", "faults.jsonl"}) {
    std::ifstream in(std::string(LEGIORRUG_SCENARIOS) + "/" + file);
    for (std::string line; std::getline(in, line);) {
      if (line.empty() || line[0] == '#') {
        continue;
      }
      json row = json::parse(line);
      if (row.contains("sites")) {
        addFaultCases(row, bases);
      } else {
        bases[row["case"]] = row;
        rows.push_back(row);
      }
    }
  }
  return rows;
}

// Sets the recording registry's script and empties its log.
void script(const char* text) {
  TestJvm::callStatic("legiorrug/recording/Script", "set", "(Ljava/lang/String;)V", TestJvm::string(text));
}

Texts arguments(const json& op) {
  Texts args;
  for (std::size_t i = 1; i < op.size(); ++i) {
    args.push_back(w(op[i]));
  }
  return args;
}

class Scenario : public ::testing::TestWithParam<json> {};

// The JVM checks of JvmTest, for the rows that use Java.
struct JvmChecks : JvmTest {
  void TestBody() override {}
  using JvmTest::SetUp;
  using JvmTest::TearDown;
};

TEST_P(Scenario, Row) {
  const json& row = GetParam();
  const bool java = row.value("registry", "java") == "java";
  std::unique_ptr<JvmChecks> jvmChecks;
  std::unique_ptr<KorISRAdapter> registry;
  const long globals = java ? TestJvm::liveGlobalReferences() : 0;
  if (java) {
    jvmChecks = std::make_unique<JvmChecks>();
    jvmChecks->SetUp();
    script("");
    registry = std::make_unique<KorISRAdapterImpl>(w("scenario"));
  } else {
    registry = std::make_unique<KorISRAdapterStub>();
  }
  const json setup = row.value("setup", json::array());
  for (const json& step : setup) {
    Texts args = arguments(step);
    operations.at(step[0])(*registry, args);
  }
  std::string lines;
  const json answers = row.value("java", json::object());
  for (const auto& [call, answer] : answers.items()) {
    lines += call + "\t" + answer.get<std::string>() + "\n";
    if (answer == "null" && call.find("<init>") != std::string::npos) {
      TestJvm::failNextNewObject();
    }
  }
  if (java) {
    script(lines.c_str());
  }

  Texts args = arguments(row["op"]);
  auto capture = std::make_shared<KorLogCapture>();
  KorLog::setSink(capture);
  KorLog::iEffectiveLogFilter = row.value("filter", 4);
  json actual = row;
  actual.erase("error");
  try {
    actual["result"] = operations.at(row["op"][0])(*registry, args);
  } catch (const KorException& error) {
    actual.erase("result");
    // The token an error carries: its operation's entry item's, or 0.
    std::string token = error.token() == 0 ? " #0" : " #?";
    for (const auto& record : capture->records()) {
      if (record.function == error.function() && error.token() != 0 && record.token == error.token() &&
          (record.kind == KorLogKind::entry || record.kind == KorLogKind::debugEntry)) {
        token = " #entry";
      }
    }
    actual["error"] = describe(error) + token;
  }
  KorLog::iEffectiveLogFilter = 0;
  KorLog::setSink(nullptr);
  json out = json::array({row["op"][0]});
  for (const auto& arg : args) {
    out.push_back(arg.toUtf8());
  }
  actual["out"] = out;
  actual["trace"] = json::array();
  for (const auto& record : capture->records()) {
    if (!row.contains("traceOf") || (record.function == row["traceOf"] && record.kind == KorLogKind::trace)) {
      actual["trace"].push_back(describe(record));
    }
  }
  if (java) {
    std::string log =
        TestJvm::utf8(TestJvm::callStatic("legiorrug/recording/Script", "log", "()Ljava/lang/String;"));
    actual["calls"] = split(log, '\n');
  }
  json expected = row;
  if (!expected.contains("out")) {
    expected["out"] = row["op"];
  }
  if (!expected.contains("error") && !expected.contains("result")) {
    expected["result"] = "";
  }
  if (std::getenv("LEGIORRUG_SCENARIO_PRINT") != nullptr) {
    json printed = actual;
    if (printed["out"] == row["op"]) {
      printed.erase("out");
    }
    if (printed.value("result", "-").empty()) {
      printed.erase("result");
    }
    std::cout << "ROW " << printed.dump() << "\n";
  }
  for (const char* field : {"result", "error", "out", "trace", "calls"}) {
    if (java || std::string(field) != "calls") {
      EXPECT_EQ(actual.value(field, json()), expected.value(field, json())) << field;
    }
  }
  registry.reset();
  if (jvmChecks) {
    jvmChecks->TearDown();
    EXPECT_EQ(TestJvm::liveGlobalReferences(), globals) << "global references left behind";
  }
}

INSTANTIATE_TEST_SUITE_P(Table, Scenario, ::testing::ValuesIn(loadRows()),
                         [](const ::testing::TestParamInfo<json>& info) {
                           std::string name = info.param["case"];
                           for (char& c : name) {
                             c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
                           }
                           return name + "_" + std::to_string(info.index);
                         });

// Outside stub containers the factory builds the Java-backed adapter; when
// its constructor raised, the instance is null and the next call builds afresh.
TEST(Factory, JavaBackedAdapterAndAFailedConstructor) {
  for (std::int32_t kind : {0, 2, -1}) {
    KorCommonStartParameters::setContainerInfo({kind});
    KorCommonStartParameters::setCommonStartParameters({w("broker")});
    script("ISRAdapter.getInstance\tother");
    EXPECT_THROW(KorISRAdapter::isrAdapter(), KorRecoverableException);
    script("");
    std::unique_ptr<KorISRAdapter> adapter(KorISRAdapter::isrAdapter(w("named")));
    EXPECT_NE(dynamic_cast<KorISRAdapterImpl*>(adapter.get()), nullptr) << kind;
    EXPECT_EQ(KorISRAdapter::isrAdapter(), adapter.get());
  }
}

// In a stub container the factory builds one in-memory registry, traced
// twice over; deleting any adapter clears the instance.
TEST(Factory, StubContainer) {
  KorCommonStartParameters::setContainerInfo({1});
  KorCommonStartParameters::setCommonStartParameters({w("broker")});
  auto capture = std::make_shared<KorLogCapture>();
  KorLog::setSink(capture);
  KorLog::iEffectiveLogFilter = 3;
  KorISRAdapter* adapter = KorISRAdapter::isrAdapter();
  KorLog::iEffectiveLogFilter = 0;
  KorLog::setSink(nullptr);
  ASSERT_NE(dynamic_cast<KorISRAdapterStub*>(adapter), nullptr);
  std::vector<std::string> lines;
  for (const auto& record : capture->records()) {
    lines.push_back(describe(record) + " #" + std::to_string(record.token - capture->records()[0].token));
  }
  const std::string address = KorLogInsert(static_cast<const void*>(adapter)).text().toUtf8();
  EXPECT_EQ(lines, (std::vector<std::string>{"entry KorISRAdapter::isrAdapter #0",
                                             "entry KorISRAdapter::isrAdapter: broker #1",
                                             "exit KorISRAdapter::isrAdapter: " + address + " #1",
                                             "exit KorISRAdapter::isrAdapter #0"}));
  KorCommonStartParameters::setContainerInfo({0});
  EXPECT_EQ(KorISRAdapter::isrAdapter(w("other")), adapter) << "the kind is read once";
  KorCommonStartParameters::setContainerInfo({1});
  { KorISRAdapterStub outsider; }
  KorISRAdapter* second = KorISRAdapter::isrAdapter();
  EXPECT_NE(second, adapter);
  delete adapter;
  KorISRAdapter* third = KorISRAdapter::isrAdapter();
  EXPECT_NE(third, second);
  delete second;
  delete third;
}

} // namespace
