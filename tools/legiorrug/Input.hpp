#pragma once

#include <istream>
#include <memory>
#include <string>

// Where the command lines come from.
class Input {
public:
  virtual ~Input() = default;
  // The next line without its newline; false at the end.
  virtual bool next(std::string& line) = 0;
};

std::unique_ptr<Input> makeStreamInput(std::istream& in);
// A prompt with line editing and history, for a terminal.
std::unique_ptr<Input> makeTerminalInput();
