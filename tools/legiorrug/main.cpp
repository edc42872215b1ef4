// legiorrug: runs registry adapter commands from a script, a pipe or a
// terminal, on the in-memory registry or the Java registry in an embedded JVM.

#include "Commands.hpp"
#include "Input.hpp"
#include "Options.hpp"
#include "Output.hpp"
#include "Registry.hpp"

#include <algorithm>
#include <fstream>
#include <iostream>

#include <unistd.h>

int main(int argc, char** argv) {
  auto parsed = parseOptions(argc, argv);
  if (auto* status = std::get_if<int>(&parsed)) {
    return *status;
  }
  const Options& options = std::get<Options>(parsed);

  std::ifstream script;
  std::unique_ptr<Input> input;
  if (!options.scriptFile.empty()) {
    script.open(options.scriptFile, std::ios::binary);
    if (!script) {
      std::cerr << "legiorrug: cannot read " << options.scriptFile << '\n';
      return 2;
    }
    input = makeStreamInput(script);
  } else if (isatty(STDIN_FILENO)) {
    input = makeTerminalInput();
  } else {
    input = makeStreamInput(std::cin);
  }

  KorISRAdapter* adapter = nullptr;
  try {
    adapter = &startRegistry(options);
  } catch (const StartError& error) {
    std::cerr << "legiorrug: " << error.what() << '\n';
    return 2;
  }

  std::unique_ptr<Output> output =
      options.json ? makeJsonOutput(std::cout) : makeTextOutput(std::cout, std::cerr);
  int status = 0;
  std::string line;
  for (std::size_t number = 1; input->next(line); ++number) {
    if (auto report = runLine(*adapter, number, line)) {
      output->write(*report);
      status = std::max(status, report->status());
    }
  }
  return status;
}
