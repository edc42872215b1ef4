#include "Commands.hpp"

#include "Dump.hpp"
#include "Utf.hpp"

#include <KorISRAdapterStub.hpp>
#include <KorWstringText.hpp>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <limits>

KorWstring Arguments::text(std::size_t index) const {
  return KorWstringText::fromUtf16(words_.at(index));
}

KorWstring Arguments::optionalText(std::size_t index) const {
  return index < words_.size() ? text(index) : KorWstring();
}

std::vector<KorWstring> Arguments::textsFrom(std::size_t index) const {
  std::vector<KorWstring> texts;
  for (; index < words_.size(); ++index) {
    texts.push_back(text(index));
  }
  return texts;
}

bool Arguments::flag(std::size_t index) const {
  const std::u16string& word = words_.at(index);
  if (word == u"true" || word == u"false") {
    return word == u"true";
  }
  throw badValue(index, "true or false");
}

int Arguments::integer(std::size_t index) const {
  const std::u16string& word = words_.at(index);
  std::string ascii;
  for (char16_t unit : word) {
    ascii += unit < 0x80 ? static_cast<char>(unit) : '?';
  }
  int value = 0;
  auto [end, error] = std::from_chars(ascii.data(), ascii.data() + ascii.size(), value);
  if (ascii.empty() || error != std::errc() || end != ascii.data() + ascii.size()) {
    throw badValue(index, "a decimal integer from " + std::to_string(std::numeric_limits<int>::min()) +
                              " to " + std::to_string(std::numeric_limits<int>::max()));
  }
  return value;
}

UsageError Arguments::badValue(std::size_t index, const std::string& expected) const {
  std::size_t start = 0;
  for (std::size_t skipped = 0; skipped < index; ++skipped) {
    start = parameters_.find(' ', start) + 1;
  }
  std::string_view name = parameters_.substr(start, parameters_.find(' ', start) - start);
  return UsageError{"argument " + std::to_string(index + 1) + " (" + std::string(name) + ") must be " +
                    expected + ", not " + quote(words_.at(index))};
}

namespace {

using A = KorISRAdapter;
using Args = Arguments;
using Out = Outcome;

// The adapter's operations in their interface order, then the shell's own.
const std::vector<Command> table = {
    {"migratePoliciesFromISR", "", "Ask the registry to migrate its policies.",
     [](A& a, const Args&, Out&) { a.migratePoliciesFromISR(); }},
    {"createPolicy", "TYPE NAME DOCUMENT [URI]", "Create a policy; shows the URI the registry gives.",
     [](A& a, const Args& x, Out& o) {
       a.createPolicy(x.text(0), x.text(1), x.text(2), o.parameter("uri", x.optionalText(3)));
     }},
    {"updatePolicy", "TYPE NAME DOCUMENT [URI]", "Replace a policy; shows the URI the registry gives.",
     [](A& a, const Args& x, Out& o) {
       a.updatePolicy(x.text(0), x.text(1), x.text(2), o.parameter("uri", x.optionalText(3)));
     }},
    {"policyExists", "TYPE NAME", "Whether the policy exists: true or false.",
     [](A& a, const Args& x, Out& o) { o.result = a.policyExists(x.text(0), x.text(1)); }},
    {"getPolicy", "TYPE NAME [DOCUMENT] [URI]", "Shows the policy's document and URI.",
     [](A& a, const Args& x, Out& o) {
       KorWstring& document = o.parameter("document", x.optionalText(2));
       a.getPolicy(x.text(0), x.text(1), document, o.parameter("uri", x.optionalText(3)));
     }},
    {"deletePolicy", "TYPE NAME", "Delete a policy.",
     [](A& a, const Args& x, Out&) { a.deletePolicy(x.text(0), x.text(1)); }},
    {"createBTD", "NAME CONTENT [URI]", "Create a business transaction definition (BTD); shows its URI.",
     [](A& a, const Args& x, Out& o) {
       a.createBTD(x.text(0), x.text(1), o.parameter("uri", x.optionalText(2)));
     }},
    {"updateBTD", "NAME CONTENT [URI]", "Replace a BTD; shows its URI.",
     [](A& a, const Args& x, Out& o) {
       a.updateBTD(x.text(0), x.text(1), o.parameter("uri", x.optionalText(2)));
     }},
    {"btdExists", "NAME", "Whether the BTD exists: true or false.",
     [](A& a, const Args& x, Out& o) { o.result = a.btdExists(x.text(0)); }},
    {"getBTD", "NAME [CONTENT] [URI]", "Shows the BTD's content and URI.",
     [](A& a, const Args& x, Out& o) {
       KorWstring& content = o.parameter("content", x.optionalText(1));
       a.getBTD(x.text(0), content, o.parameter("uri", x.optionalText(2)));
     }},
    {"deleteBTD", "NAME", "Delete a BTD.", [](A& a, const Args& x, Out&) { a.deleteBTD(x.text(0)); }},
    {"listBTDs", "[URI...]", "The URIs of every BTD, appended to the ones given.",
     [](A& a, const Args& x, Out& o) { a.listBTDs(o.parameter("uris", x.textsFrom(0))); }},
    {"getBTDNames", "[NAMES]", "The names of every BTD, as a list and joined by one space.",
     [](A& a, const Args& x, Out& o) { o.result = a.getBTDNames(o.parameter("names", x.optionalText(0))); }},
    {"getPolicyNames", "TYPE [NAMES]", "The names of the policies of one type, as a list and joined.",
     [](A& a, const Args& x, Out& o) {
       o.result = a.getPolicyNames(x.text(0), o.parameter("names", x.optionalText(1)));
     }},
    {"setRepositoryDetails", "T1 T2 T3 FLAG T5 T6 INT", "Pass repository details on to the registry.",
     [](A& a, const Args& x, Out&) {
       bool flag = x.flag(3);
       int value = x.integer(6);
       a.setRepositoryDetails(x.text(0), x.text(1), x.text(2), flag, x.text(4), x.text(5), value);
     }},
    {"createService", "NAME NAMESPACE DOCUMENT", "Create a service.",
     [](A& a, const Args& x, Out&) { a.createService(x.text(0), x.text(1), x.text(2)); }},
    {"getServices", "", "Every service (name and namespace).",
     [](A& a, const Args&, Out& o) { o.result = a.getServices(); }},
    {"getService", "NAME", "Whether the service exists: true and the service, or false.",
     [](A& a, const Args& x, Out& o) {
       o.result = a.getService(x.text(0), o.parameter("service", KorISRService()));
     }},
    {"serviceExists", "NAME NAMESPACE", "Whether the service exists in the namespace: true or false.",
     [](A& a, const Args& x, Out& o) { o.result = a.serviceExists(x.text(0), x.text(1)); }},
    {"deleteService", "NAME", "Delete a service.",
     [](A& a, const Args& x, Out&) { a.deleteService(x.text(0)); }},
    {"stopMessageFlow", "T1 T2 T3 T4", "Pass a message-flow stop on to the registry.",
     [](A& a, const Args& x, Out&) { a.stopMessageFlow(x.text(0), x.text(1), x.text(2), x.text(3)); }},
    {"dump", "[TYPE...]", "A script of this shell's commands that rebuilds the registry.",
     [](A& a, const Args& x, Out& o) { o.result = Script{dumpRegistry(a, x.textsFrom(0))}; }},
    {"quit", "", "End the input, in a script or a pipe as at a terminal.", nullptr},
    {"exit", "", "End the input, in a script or a pipe as at a terminal.", nullptr},
    {"reset", "", "Empty the in-memory registry (--container-kind 1 only).",
     [](A& a, const Args&, Out&) {
       auto* stub = dynamic_cast<KorISRAdapterStub*>(&a);
       if (stub == nullptr) {
         throw UsageError{"reset works on the in-memory registry only (--container-kind 1)"};
       }
       stub->reset();
     }},
};

struct ArgumentCount {
  std::size_t min = 0;
  std::size_t max = 0;
};

ArgumentCount countOf(std::string_view parameters) {
  ArgumentCount count;
  std::size_t start = 0;
  while ((start = parameters.find_first_not_of(' ', start)) != std::string_view::npos) {
    std::size_t end = std::min(parameters.find(' ', start), parameters.size());
    std::string_view word = parameters.substr(start, end - start);
    if (word.front() != '[') {
      ++count.min;
    }
    count.max = word.size() > 4 && word.substr(word.size() - 4) == "...]"
                    ? std::numeric_limits<std::size_t>::max()
                    : count.max + 1;
    start = end;
  }
  return count;
}

std::string describeCount(const Command& command) {
  ArgumentCount count = countOf(command.parameters);
  std::string takes =
      count.max == std::numeric_limits<std::size_t>::max() ? "at least " + std::to_string(count.min)
      : count.min == count.max                             ? std::to_string(count.min)
      : count.min + 1 == count.max ? std::to_string(count.min) + " or " + std::to_string(count.max)
                                   : std::to_string(count.min) + " to " + std::to_string(count.max);
  return std::string(command.name) + " takes " + takes +
         (count.min == 1 && count.max == 1 ? " argument" : " arguments") + ": " + usage(command);
}

} // namespace

std::string usage(const Command& command) {
  return std::string(command.name) + (command.parameters.empty() ? "" : " ") +
         std::string(command.parameters);
}

const std::vector<Command>& commands() {
  return table;
}

int Report::status() const {
  if (ok()) {
    return 0;
  }
  return std::holds_alternative<UsageError>(failure) ? 2 : 1;
}

namespace {

// The file's content as UTF-8, byte for byte.
std::u16string readFile(const std::u16string& fileName) {
  std::string path = toWtf8(fileName);
  if (path.empty()) {
    throw UsageError{"@ needs a file name"};
  }
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "re"), std::fclose);
  std::string content;
  char buffer[65536];
  std::size_t size = 0;
  while (file != nullptr && (size = std::fread(buffer, 1, sizeof buffer, file.get())) > 0) {
    content.append(buffer, size);
  }
  if (file == nullptr || std::ferror(file.get())) {
    throw UsageError{"cannot read @" + path + ": " + std::strerror(errno)};
  }
  try {
    return std::u16string(KorWstringText::view(KorWstringText::fromUtf8(content)));
  } catch (const KorWstringEncodingError& error) {
    throw UsageError{"@" + path + " is not UTF-8 (byte " + std::to_string(error.offset() + 1) + ")"};
  }
}

std::vector<std::u16string> values(const Words& words) {
  std::vector<std::u16string> values;
  for (const Word& word : words) {
    values.push_back(word.fromFile ? readFile(word.text) : word.text);
  }
  return values;
}

const Command* find(const std::u16string& name) {
  for (const Command& candidate : table) {
    if (name.size() == candidate.name.size() &&
        std::equal(name.begin(), name.end(), candidate.name.begin())) {
      return &candidate;
    }
  }
  return nullptr;
}

std::optional<Report> run(KorISRAdapter& adapter, std::size_t lineNumber, std::string_view line,
                          std::string_view helpCommand) {
  auto split = splitLine(line);
  if (auto* error = std::get_if<LineError>(&split)) {
    return Report::usage(lineNumber, error->message);
  }
  Words& words = std::get<Words>(split);
  if (words.empty()) {
    return std::nullopt;
  }
  Word name = words.front();
  words.erase(words.begin());
  Report report;
  report.line = lineNumber;
  report.op = toWtf8(name.text);
  const Command* command = name.fromFile ? nullptr : find(name.text);
  if (command == nullptr) {
    report.failure = UsageError{"unknown command " + quote(name) + " (" + std::string(helpCommand) +
                                " lists the commands)"};
    return report;
  }
  ArgumentCount count = countOf(command->parameters);
  if (words.size() < count.min || words.size() > count.max) {
    report.failure = UsageError{describeCount(*command) + ", not " + std::to_string(words.size())};
    return report;
  }
  report.endsInput = command->run == nullptr;
  try {
    if (!report.endsInput) {
      command->run(adapter, Arguments(values(words), command->parameters), report.outcome);
    }
  } catch (const UsageError& error) {
    report.outcome = Outcome();
    report.failure = error;
  } catch (const KorException& error) {
    report.failure = error.clone();
  } catch (const std::exception& error) {
    report.failure = InternalError{error.what()};
  }
  return report;
}

} // namespace

std::optional<Report> runLine(KorISRAdapter& adapter, std::size_t lineNumber, std::string_view line,
                              std::string_view helpCommand) {
  try {
    return run(adapter, lineNumber, line, helpCommand);
  } catch (const std::exception& error) {
    // Splitting a line can run out of memory too.
    Report report;
    report.line = lineNumber;
    report.failure = InternalError{error.what()};
    return report;
  }
}
