#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

// Input or output is lost: the run cannot go on truthfully. what() is for a person.
class LostData : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

// The longest command line, newline excluded; a longer one is not kept.
constexpr std::size_t maxLineBytes = std::size_t{1} << 20;

enum class Read { line, tooLong, end };

// Where the command lines come from. Throws LostData when reading fails.
class Input {
public:
  virtual ~Input() = default;
  // The next line without its newline; tooLong skips the rest of a line
  // over maxLineBytes.
  // A script line that ends in an unquoted backslash goes on in the next.
  virtual Read next(std::string& line) = 0;
  // The number of the line next gave last (of its first line, when it goes on).
  virtual std::size_t lineNumber() const = 0;
  // Reads the rest without running it: how many lines were left, where
  // they can be counted without asking a person.
  virtual std::optional<std::size_t> skipRest() = 0;
  // A person answers each line as it is shown.
  virtual bool interactive() const { return false; }
};

// A script or a pipe; a UTF-8 byte-order mark at its start is skipped.
// name is for messages.
std::unique_ptr<Input> makeFileInput(std::FILE* file, const std::string& name);

struct TerminalOptions {
  std::string historyFile; // empty: no history kept
  std::FILE* prompts;      // where the prompt and the help go
};

// A prompt with line editing, history and completion of command names, for a
// terminal. help is answered here, and quit and exit end the input.
std::unique_ptr<Input> makeTerminalInput(const TerminalOptions& options);
