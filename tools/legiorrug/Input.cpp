#include "Input.hpp"

#include <cstdio>
#include <cstdlib>

#include <editline/readline.h>

namespace {

class StreamInput : public Input {
public:
  explicit StreamInput(std::istream& in) : in_(in) {}
  bool next(std::string& line) override { return static_cast<bool>(std::getline(in_, line)); }

private:
  std::istream& in_;
};

class TerminalInput : public Input {
public:
  bool next(std::string& line) override {
    char* text = readline("legiorrug> ");
    if (text == nullptr) {
      std::fputc('\n', stdout);
      return false;
    }
    line = text;
    std::free(text);
    if (line.find_first_not_of(" \t") != std::string::npos) {
      add_history(line.c_str());
    }
    return true;
  }
};

} // namespace

std::unique_ptr<Input> makeStreamInput(std::istream& in) {
  return std::make_unique<StreamInput>(in);
}

std::unique_ptr<Input> makeTerminalInput() {
  return std::make_unique<TerminalInput>();
}
