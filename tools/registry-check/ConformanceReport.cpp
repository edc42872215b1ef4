#include "Conformance.hpp"

#include "Input.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <sstream>

namespace {

const char* verdictName(Verdict verdict) {
  switch (verdict) {
  case Verdict::pass:
    return "pass";
  case Verdict::warning:
    return "warning";
  case Verdict::fail:
    return "fail";
  case Verdict::skip:
    break;
  }
  return "skipped";
}

std::string seconds(double value) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(3) << value;
  return text.str();
}

std::string summary(const Totals& totals) {
  return std::to_string(totals.passed + totals.warnings + totals.failed + totals.skipped) +
         " requirements: " + std::to_string(totals.passed) + " passed, " + std::to_string(totals.failed) +
         " failed, " + std::to_string(totals.warnings) + " with warnings, " + std::to_string(totals.skipped) +
         " skipped, in " + seconds(totals.seconds) + " s";
}

class TextReport : public ConformanceReport {
public:
  TextReport(std::ostream& out, const std::string& prefix) : out_(out) {
    out_ << "Checking the Java registry on the class path against what the library needs of it.\n"
         << "The checks make names starting with \"" << prefix << "\" and delete them again.\n";
  }

  void row(const RowResult& result) override {
    if (result.requirement->group != group_) {
      group_ = result.requirement->group;
      out_ << '\n' << group_ << '\n';
    }
    std::string verdict = verdictName(result.verdict);
    if (result.verdict == Verdict::fail) {
      verdict = "FAIL";
    }
    out_ << "  " << std::left << std::setw(9) << verdict << result.requirement->name << '\n';
    for (const Evidence& evidence : result.evidence) {
      const std::string indent = "           ";
      if (evidence.verdict != result.verdict) {
        out_ << indent << verdictName(evidence.verdict) << ":\n";
      }
      out_ << indent << "call:     " << evidence.call << '\n'
           << indent << "got:      " << evidence.got << '\n'
           << indent << "expected: " << evidence.expected << '\n';
    }
    if (!result.skipped.empty()) {
      out_ << "           " << result.skipped << '\n';
    }
  }

  void end(const Totals& totals) override { out_ << '\n' << summary(totals) << '\n'; }

private:
  std::ostream& out_;
  std::string group_;
};

using Json = nlohmann::ordered_json;

void writeLine(std::ostream& out, const Json& value) {
  out << value.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
}

class JsonReport : public ConformanceReport {
public:
  explicit JsonReport(std::ostream& out) : out_(out) {}

  void row(const RowResult& result) override {
    Json line = {{"group", result.requirement->group},
                 {"requirement", result.requirement->name},
                 {"verdict", verdictName(result.verdict)},
                 {"seconds", result.seconds}};
    Json evidence = Json::array();
    for (const Evidence& item : result.evidence) {
      evidence.push_back({{"verdict", verdictName(item.verdict)},
                          {"call", item.call},
                          {"got", item.got},
                          {"expected", item.expected}});
    }
    line["evidence"] = std::move(evidence);
    if (!result.skipped.empty()) {
      line["skipped"] = result.skipped;
    }
    writeLine(out_, line);
  }

  void end(const Totals& totals) override {
    writeLine(out_, {{"summary",
                      {{"passed", totals.passed},
                       {"failed", totals.failed},
                       {"warnings", totals.warnings},
                       {"skipped", totals.skipped},
                       {"seconds", totals.seconds}}}});
  }

private:
  std::ostream& out_;
};

// Texts reach the report quoted (controls escaped), so only the markup
// characters and what XML 1.0 cannot hold remain to handle.
std::string xml(const std::string& text) {
  std::string escaped;
  for (char c : text) {
    switch (c) {
    case '&':
      escaped += "&amp;";
      break;
    case '<':
      escaped += "&lt;";
      break;
    case '>':
      escaped += "&gt;";
      break;
    case '"':
      escaped += "&quot;";
      break;
    default:
      escaped += static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\t' ? '?' : c;
    }
  }
  return escaped;
}

std::string details(const RowResult& result) {
  std::string text;
  for (const Evidence& evidence : result.evidence) {
    text += std::string(verdictName(evidence.verdict)) + "\ncall: " + evidence.call +
            "\ngot: " + evidence.got + "\nexpected: " + evidence.expected + "\n";
  }
  return text;
}

void writeCase(std::ostream& out, const RowResult& result) {
  out << "    <testcase name=\"" << xml(result.requirement->name)
      << "\" classname=\"legiorrug.check-registry." << xml(result.requirement->group) << "\" time=\""
      << seconds(result.seconds) << "\"";
  if (result.verdict == Verdict::pass && result.evidence.empty()) {
    out << "/>\n";
    return;
  }
  out << ">\n";
  if (result.verdict == Verdict::fail) {
    const Evidence& first = *std::find_if(result.evidence.begin(), result.evidence.end(),
                                          [](const Evidence& item) { return item.verdict == Verdict::fail; });
    out << "      <failure message=\"" << xml(first.got) << "\" type=\"requirement\">" << xml(details(result))
        << "</failure>\n";
  } else if (result.verdict == Verdict::skip) {
    out << "      <skipped message=\"" << xml(result.skipped) << "\"/>\n";
  } else { // a warning, or a pass with what the registry chose
    out << "      <system-out>" << xml(details(result)) << "</system-out>\n";
  }
  out << "    </testcase>\n";
}

std::string counts(const Totals& totals) {
  return "tests=\"" + std::to_string(totals.passed + totals.warnings + totals.failed + totals.skipped) +
         "\" failures=\"" + std::to_string(totals.failed) + "\" errors=\"0\" skipped=\"" +
         std::to_string(totals.skipped) + "\" time=\"" + seconds(totals.seconds) + "\"";
}

} // namespace

std::unique_ptr<ConformanceReport> makeTextReport(std::ostream& out, const std::string& prefix) {
  return std::make_unique<TextReport>(out, prefix);
}

std::unique_ptr<ConformanceReport> makeJsonReport(std::ostream& out) {
  return std::make_unique<JsonReport>(out);
}

void writeJunitReport(const std::string& path, const std::vector<RowResult>& results, const Totals& totals) {
  std::ostringstream out;
  out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      << "<testsuites name=\"legiorrug --check-registry\" " << counts(totals) << ">\n";
  for (auto first = results.begin(); first != results.end();) {
    auto last = std::find_if(first, results.end(), [&](const RowResult& result) {
      return result.requirement->group != first->requirement->group;
    });
    Totals group;
    for (auto result = first; result != last; ++result) {
      ++(result->verdict == Verdict::fail   ? group.failed
         : result->verdict == Verdict::skip ? group.skipped
                                            : group.passed);
      group.seconds += result->seconds;
    }
    out << "  <testsuite name=\"" << xml(first->requirement->group) << "\" " << counts(group) << ">\n";
    for (auto result = first; result != last; ++result) {
      writeCase(out, *result);
    }
    out << "  </testsuite>\n";
    first = last;
  }
  out << "</testsuites>\n";
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!(file << out.str()) || !file.flush()) {
    throw LostData("cannot write the JUnit report to " + path + ": " + std::strerror(errno));
  }
}
