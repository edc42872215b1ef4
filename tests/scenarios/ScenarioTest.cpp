#include "KorISRAdapterImpl.hpp"
#include "TestJvm.hpp"

#include <KorCommonStartParameters.hpp>
#include <KorException.hpp>
#include <KorISRAdapterStub.hpp>
#include <KorLog.hpp>
#include <KorLogSink.hpp>
#include <KorStartParametersSetup.hpp>
#include <KorWstringText.hpp>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <regex>
#include <sstream>

// One case per row of tests/scenarios/*.jsonl. A row: "case" (its name),
// "registry" ("java", the default, or "stub"), "setup" (operations run
// first), "op" (the operation and its arguments, out-parameters' values
// before the call included), "java" (the recording registry's script,
// answers by call), "filter" (trace filter, default 4), and what comes out:
// "result", "out" (op after the call; default unchanged), "error" (see
// describe), "calls" (the Java calls with their arguments) and "trace" (the
// records, see describe). A Java row's "sites" makes its fault cases too
// (addFaultCases). LEGIORRUG_SCENARIO_PRINT=1 prints each row as run.
namespace {

using nlohmann::json;
using Texts = std::vector<KorWstring>;

KorWstring w(const std::string& utf8) {
  return KorWstringText::fromUtf8(utf8);
}

std::string joined(const Texts& texts) {
  std::string line;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    line += (i == 0 ? "" : ",") + KorWstringText::toUtf8(texts[i]);
  }
  return line;
}

// Each operation reads its arguments, out-parameters included, from a and
// writes the out-parameters back, also when it raises; a list out-parameter is the rest of a.
using Operation = std::function<std::string(KorISRAdapter&, Texts&)>;
const std::map<std::string, Operation> operations = {
    {"createBTD", [](auto& r, Texts& a) { return r.createBTD(a[0], a[1], a[2]), ""; }},
    {"createBTD(name, x, x)", [](auto& r, Texts& a) { return r.createBTD(a[0], a[1], a[1]), ""; }},
    {"updateBTD", [](auto& r, Texts& a) { return r.updateBTD(a[0], a[1], a[2]), ""; }},
    {"getBTD", [](auto& r, Texts& a) { return r.getBTD(a[0], a[1], a[2]), ""; }},
    {"deleteBTD", [](auto& r, Texts& a) { return r.deleteBTD(a[0]), ""; }},
    {"btdExists", [](auto& r, Texts& a) { return json(r.btdExists(a[0])).dump(); }},
    {"listBTDs", [](auto& r, Texts& a) { return r.listBTDs(a), ""; }},
    {"getBTDNames", [](auto& r, Texts& a) { return "[" + joined(r.getBTDNames(a[0])) + "]"; }},
    {"createPolicy", [](auto& r, Texts& a) { return r.createPolicy(a[0], a[1], a[2], a[3]), ""; }},
    {"createPolicy(t,n,x,x)", [](auto& r, Texts& a) { return r.createPolicy(a[0], a[1], a[2], a[2]), ""; }},
    {"updatePolicy", [](auto& r, Texts& a) { return r.updatePolicy(a[0], a[1], a[2], a[3]), ""; }},
    {"getPolicy", [](auto& r, Texts& a) { return r.getPolicy(a[0], a[1], a[2], a[3]), ""; }},
    {"deletePolicy", [](auto& r, Texts& a) { return r.deletePolicy(a[0], a[1]), ""; }},
    {"policyExists", [](auto& r, Texts& a) { return json(r.policyExists(a[0], a[1])).dump(); }},
    {"getPolicyNames", [](auto& r, Texts& a) { return "[" + joined(r.getPolicyNames(a[0], a[1])) + "]"; }},
    {"createService", [](auto& r, Texts& a) { return r.createService(a[0], a[1], a[2]), ""; }},
    {"serviceExists", [](auto& r, Texts& a) { return json(r.serviceExists(a[0], a[1])).dump(); }},
    {"getService",
     [](auto& r, Texts& a) {
       // Made by assignment, as the broker makes its records: the library itself never assigns one.
       KorISRService s;
       s = KorISRService(a[1], a[2], a[3]);
       const std::shared_ptr<void> writeBack(nullptr, [&](void*) {
         a = {a[0], s.name, s.serviceNamespace, s.document};
       });
       return json(r.getService(a[0], s)).dump() + " " + KorWstringText::toUtf8(s.logSourceName());
     }},
    {"deleteService", [](auto& r, Texts& a) { return r.deleteService(a[0]), ""; }},
    {"getServices",
     [](auto& r, Texts&) {
       std::string line;
       for (const auto& s : r.getServices()) {
         line += (line.empty() ? "" : ",") + KorWstringText::toUtf8(s.name) + "/" +
                 KorWstringText::toUtf8(s.serviceNamespace) + "/" + KorWstringText::toUtf8(s.document);
       }
       return "[" + line + "]";
     }},
    {"setRepositoryDetails",
     [](auto& r, Texts& a) {
       r.setRepositoryDetails(a[0], a[1], a[2], a[3] == w("true"), a[4], a[5],
                              std::stoi(KorWstringText::toUtf8(a[6])));
       return "";
     }},
    {"migratePoliciesFromISR", [](auto& r, Texts&) { return r.migratePoliciesFromISR(), ""; }},
    {"stopMessageFlow", [](auto& r, Texts& a) { return r.stopMessageFlow(a[0], a[1], a[2], a[3]), ""; }},
    {"reset", [](auto& r, Texts&) { return dynamic_cast<KorISRAdapterStub&>(r).reset(), ""; }},
    {"construct", [](auto&, Texts&) { return KorISRAdapterImpl(w("another")), ""; }},
};

// "R|F number function: insert|insert", a nested item in braces.
std::string describe(const KorException& error) {
  char number[16];
  std::snprintf(number, sizeof number, "%#x", error.messageNumber());
  std::string line = std::string(error.isFatal() ? "F " : "R ") + number + " " + error.function() + ":";
  const char* separator = " ";
  for (const auto& insert : error.inserts()) {
    line += separator + (insert.isNested() ? "{" + describe(insert.nested()) + "}"
                                           : KorWstringText::toUtf8(insert.text()));
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
    bool masked = i == 2 && KorWstringText::toUtf8(record.inserts[0]) == "Throwing exception";
    line += separator + (masked ? std::string("L") : KorWstringText::toUtf8(record.inserts[i]));
    separator = "|";
  }
  return line;
}

std::vector<json> rows;

// The fault cases of a row: for each of its "sites" [Java call, call label,
// 1 when null is an error, out-parameters after the failure] the row with the
// site answering each outcome. Each case expects the calls up to the failing
// one, and at filter 3 only the raise's own record.
void addFaultCases(const json& base) {
  // The answer, the error ({f} the function, {l} the call label) and the
  // "Throwing exception" record's number, none for a known exception.
  static const char* const outcomes[][3] = {
      {"known|3001|fault text|i1", "R 0xbb9 {f}: fault text|i1", nullptr},
      {"other", "R 0xc0000e75 {f}: Error Making JNI Call: {l}|{l}|java.lang.IllegalStateException|scripted",
       "DRX3701"},
      {"fatal", "F 0xc0000e76 {f}: Fatal Error Making JNI Call: {l}|{l}|java.lang.Error|scripted", "DRX3702"},
      {"null", "R 0xc0000e77 {f}: Unexpected NULL returned from JNI Call in: {l}|{l}", "DRX3703"}};
  const std::string op = base["op"][0];
  const std::string function = "KorISRAdapterImpl::" + (op == "construct" ? "KorISRAdapterImpl" : op);
  for (const json& site : base["sites"]) {
    const std::string call = site[0];
    for (const auto& [answer, text, drx] : outcomes) {
      if (answer == std::string("null") && site[2] == 0) {
        continue;
      }
      std::string error = std::regex_replace(std::regex_replace(text, std::regex("\\{f\\}"), function),
                                             std::regex("\\{l\\}"), site[1].get<std::string>());
      json c = base;
      c.erase("result");
      c.erase("sites");
      c["case"] = base["case"].get<std::string>() + " " + call + " " + std::string(answer).substr(0, 5);
      c["java"] = {{call, answer}};
      c["out"] = site.size() > 3 ? site[3] : base["op"];
      // Only the constructor writes a plain entry item, whose token its raise carries.
      c["error"] = error + (op == "construct" && drx != nullptr ? " #entry" : " #0");
      const auto calls = base["calls"].get<std::vector<std::string>>();
      const auto failing = std::find_if(calls.begin(), calls.end(), [&](const std::string& line) {
        return line.rfind(call + "(", 0) == 0;
      });
      // A constructor that NewObject answers null for never ran.
      const bool ran = answer != std::string("null") || call.find("<init>") == std::string::npos;
      c["calls"] = std::vector<std::string>(calls.begin(), failing + (ran ? 1 : 0));
      c["filter"] = 3;
      c["traceOf"] = function;
      c["trace"] =
          drx == nullptr
              ? json::array()
              : json::array({"trace " + function + ": Throwing exception|src/registry/KorISRAdapterImpl|L|" +
                             drx + "|" + error.substr(error.find(": ") + 2)});
      rows.push_back(c);
    }
  }
}

std::vector<json> loadRows() {
  for (const char* file : {"stub.jsonl", "java.jsonl"}) {
    std::ifstream in(std::string(LEGIORRUG_SCENARIOS) + "/" + file);
    for (std::string line; std::getline(in, line);) {
      rows.push_back(json::parse(line));
      if (rows.back().contains("sites")) {
        addFaultCases(json(rows.back()));
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
  std::transform(op.begin() + 1, op.end(), std::back_inserter(args), [](const json& arg) { return w(arg); });
  return args;
}

// Sends the trace at filter to the capture it returns; at 0, stops it.
std::shared_ptr<KorLogCapture> capturing(int filter) {
  auto capture = filter == 0 ? nullptr : std::make_shared<KorLogCapture>();
  KorLogSink::install(capture);
  KorLog::iEffectiveLogFilter = filter;
  return capture;
}

// Every row runs under the JVM checks of JvmTest.
class Scenario : public JvmTest, public ::testing::WithParamInterface<json> {};

TEST_P(Scenario, Row) {
  const json& row = GetParam();
  const bool java = row.value("registry", "java") == "java";
  const long globals = TestJvm::liveGlobalReferences();
  script("");
  std::unique_ptr<KorISRAdapter> registry(
      java ? static_cast<KorISRAdapter*>(new KorISRAdapterImpl(w("scenario"))) : new KorISRAdapterStub);
  for (const json& step : row.value("setup", json::array())) {
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
  script(lines.c_str());

  Texts args = arguments(row["op"]);
  json actual = row;
  actual.erase("error");
  actual["result"] = "";
  const auto capture = capturing(row.value("filter", 4));
  try {
    actual["result"] = operations.at(row["op"][0])(*registry, args);
  } catch (const KorException& error) {
    actual.erase("result");
    // The token an error carries: its operation's entry item's, or 0.
    const auto records = capture->records();
    const bool entry = std::any_of(records.begin(), records.end(), [&](const KorLogRecord& record) {
      return record.function == error.function() && record.token == error.token() &&
             (record.kind == KorLogKind::entry || record.kind == KorLogKind::debugEntry);
    });
    actual["error"] = describe(error) + (error.token() == 0 ? " #0" : entry ? " #entry" : " #?");
  }
  capturing(0);
  actual["out"] = row["op"];
  for (std::size_t i = 0; i < args.size(); ++i) {
    actual["out"][i + 1] = KorWstringText::toUtf8(args[i]);
  }
  actual["trace"] = json::array();
  for (const auto& record : capture->records()) {
    if (!row.contains("traceOf") || (record.function == row["traceOf"] && record.kind == KorLogKind::trace)) {
      actual["trace"].push_back(describe(record));
    }
  }
  if (java) {
    std::istringstream log(
        TestJvm::utf8(TestJvm::callStatic("legiorrug/recording/Script", "log", "()Ljava/lang/String;")));
    actual["calls"] = json::array();
    for (std::string line; std::getline(log, line);) {
      actual["calls"].push_back(line);
    }
  }
  if (std::getenv("LEGIORRUG_SCENARIO_PRINT") != nullptr) {
    std::cout << "ROW " << actual.dump() << "\n";
  }
  json expected = row;
  expected["out"] = row.value("out", row["op"]);
  if (!row.contains("error")) {
    expected["result"] = row.value("result", "");
  }
  EXPECT_EQ(actual, expected);
  registry.reset();
  EXPECT_EQ(TestJvm::liveGlobalReferences(), globals) << "global references left behind";
}

INSTANTIATE_TEST_SUITE_P(Table, Scenario, ::testing::ValuesIn(loadRows()), [](const auto& info) {
  return std::regex_replace(info.param["case"].template get<std::string>(), std::regex("[^A-Za-z0-9]"), "_") +
         "_" + std::to_string(info.index);
});

// The factory builds the in-memory registry in stub containers (kind 1), else
// the Java-backed one, once, reading the container only then, and traces the
// broker's name and the instance; a constructor that raised leaves no
// instance behind. Any adapter is the instance from its construction, and
// destroying any adapter clears it.
TEST(Factory, KindsAndAFailedConstructor) {
  KorStartParametersSetup::setCommonStartParameters({w("broker")});
  for (std::int32_t kind : {0, 1, 2, -1}) {
    KorStartParametersSetup::setContainerInfo({kind});
    script("ISRAdapter.getInstance\tother");
    if (kind != 1) {
      EXPECT_THROW(KorISRAdapter::isrAdapter(), KorRecoverableException);
    }
    script("");
    std::unique_ptr<KorISRAdapter> adapter;
    const auto capture = capturing(3);
    adapter.reset(KorISRAdapter::isrAdapter());
    const int reads = KorStartParametersSetup::containerInfoReads();
    EXPECT_EQ(KorISRAdapter::isrAdapter(w("other")), adapter.get());
    capturing(0);
    EXPECT_EQ(KorStartParametersSetup::containerInfoReads(), reads) << "read again with an instance";
    EXPECT_EQ(dynamic_cast<KorISRAdapterStub*>(adapter.get()) != nullptr, kind == 1) << kind;
    const std::string entry = "entry KorISRAdapter::isrAdapter", exit = "exit KorISRAdapter::isrAdapter",
                      at = ": " + KorWstringText::toUtf8(
                                      KorLogInsert(static_cast<const void*>(adapter.get())).text());
    std::vector<std::string> expected = {entry, entry + ": broker", exit + at,
                                         exit,  entry + ": other",  exit + at};
    if (kind != 1) {
      expected.insert(expected.begin() + 2, {"entry KorISRAdapterImpl::KorISRAdapterImpl",
                                             "exit KorISRAdapterImpl::KorISRAdapterImpl"});
    }
    std::vector<std::string> trace;
    std::vector<KorLogToken> open; // each exit carries its entry's token
    for (const auto& record : capture->records()) {
      trace.push_back(describe(record));
      if (record.kind == KorLogKind::entry) {
        open.push_back(record.token);
      } else if (!open.empty() && record.kind == KorLogKind::exit) {
        EXPECT_EQ(record.token, open.back()) << trace.back();
        open.pop_back();
      }
    }
    EXPECT_EQ(trace, expected);

    auto second = std::make_unique<KorISRAdapterStub>();
    EXPECT_EQ(KorISRAdapter::isrAdapter(), second.get());
    adapter.reset();
    KorISRAdapter* next = KorISRAdapter::isrAdapter();
    ASSERT_NE(next, second.get()) << "destroying an adapter that was not the instance left it set";
    adapter.reset(next);
  }
}

} // namespace
