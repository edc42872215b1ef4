#pragma once

#include "CommandLine.hpp"

#include <KorException.hpp>
#include <KorISRAdapter.hpp>
#include <KorISRService.hpp>

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// Lines of this shell's commands, as UTF-8.
struct Script {
  std::string text;
};

// A value that an operation returns or leaves in a parameter.
using Value = std::variant<bool, KorWstring, std::vector<KorWstring>, KorISRService,
                           std::vector<KorISRService>, Script>;

// A line that cannot be run: the operation is not called.
struct UsageError {
  std::string message;
};

// What one call produced: the return value, if the call returned, and every
// out and in/out parameter by its name, as it stands after the call. The
// parameters live here, so a failed call leaves them as the operation did.
struct Outcome {
  std::optional<Value> result;
  std::map<std::string, Value> out;

  // The parameter `name`, starting as `initial`.
  template <typename T> T& parameter(const std::string& name, T initial) {
    return std::get<T>(out.insert_or_assign(name, Value(std::move(initial))).first->second);
  }
};

// The values after the command word, a file's content for a word written
// @FILE; the count is checked before a command runs.
class Arguments {
public:
  // parameters: the command's, to name an argument in a message.
  Arguments(const std::vector<std::u16string>& words, std::string_view parameters)
      : words_(words), parameters_(parameters) {}

  KorWstring text(std::size_t index) const;
  // Empty when not given.
  KorWstring optionalText(std::size_t index) const;
  std::vector<KorWstring> textsFrom(std::size_t index) const;
  // These throw UsageError for a bad value.
  bool flag(std::size_t index) const;
  int integer(std::size_t index) const;

private:
  UsageError badValue(std::size_t index, const std::string& expected) const;

  const std::vector<std::u16string>& words_;
  std::string_view parameters_;
};

struct Command {
  std::string_view name;
  // For people and for the argument count: a word in [] is optional, and
  // one ending in "...]" takes any number of words.
  std::string_view parameters;
  // What it does, in one line: for help COMMAND and the manual page.
  std::string_view summary;
  // None for the commands that end the input.
  void (*run)(KorISRAdapter& adapter, const Arguments& arguments, Outcome& outcome);
};

const std::vector<Command>& commands();
// The name and the parameters, as the help shows them.
std::string usage(const Command& command);

// An operation that raised something else than the platform's exceptions.
struct InternalError {
  std::string message;
};

using Failure = std::variant<std::monostate, UsageError, std::shared_ptr<const KorException>, InternalError>;

// One command line's outcome, for the output writers.
struct Report {
  std::size_t line = 0;
  std::optional<std::string> op; // the command word, when the line has one
  Outcome outcome;
  Failure failure;
  bool endsInput = false; // quit or exit: nothing ran, nothing to show

  bool ok() const { return std::holds_alternative<std::monostate>(failure); }
  // 0 done, 1 the operation raised, 2 the line could not be run.
  int status() const;

  static Report usage(std::size_t line, std::string message) {
    Report report;
    report.line = line;
    report.failure = UsageError{std::move(message)};
    return report;
  }
};

// Runs one line on the adapter; nothing for a blank or comment line. Whatever
// fails, the failure is in the report; an unknown command names helpCommand.
std::optional<Report> runLine(KorISRAdapter& adapter, std::size_t lineNumber, std::string_view line,
                              std::string_view helpCommand = "legiorrug --help");
