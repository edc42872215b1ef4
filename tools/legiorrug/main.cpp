// legiorrug: runs registry adapter commands from a script, a pipe or a
// terminal, on the in-memory registry or the Java registry in an embedded JVM.

#include "Commands.hpp"
#include "Conformance.hpp"
#include "Input.hpp"
#include "Options.hpp"
#include "Output.hpp"
#include "Registry.hpp"
#include "Trace.hpp"
#include <KorLogSink.hpp>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include <unistd.h>

namespace {

struct ScriptFile {
  std::FILE* file = nullptr;
  ~ScriptFile() {
    if (file != nullptr) {
      std::fclose(file);
    }
  }
};

std::unique_ptr<Input> openInput(const Options& options, ScriptFile& script) {
  if (!options.scriptFile.empty() && options.scriptFile != "-") {
    script.file = std::fopen(options.scriptFile.c_str(), "re");
    if (script.file == nullptr) {
      throw LostData("cannot read " + options.scriptFile + ": " + std::strerror(errno));
    }
    return makeFileInput(script.file, options.scriptFile);
  }
  if (options.scriptFile.empty() && isatty(STDIN_FILENO) != 0) {
    const char* home = std::getenv("HOME");
    bool keep = !options.noHistory && home != nullptr && *home != '\0';
    return makeTerminalInput(TerminalOptions{keep ? std::string(home) + "/.legiorrug_history" : "",
                                             isatty(STDOUT_FILENO) != 0 ? stdout : stderr});
  }
  return makeFileInput(stdin, "standard input");
}

std::shared_ptr<TraceSink> startTrace(const Options& options) {
  std::shared_ptr<TraceSink> sink;
  if (!options.traceFile.empty()) {
    sink = std::make_shared<TraceSink>(options.traceFile);
  } else if (options.trace) {
    sink = std::make_shared<TraceSink>();
  }
  KorLogSink::install(sink);
  if (options.trace) {
    KorLog::iEffectiveLogFilter = *options.trace;
  }
  return sink;
}

void checkWritten(TraceSink* trace) {
  if (!std::cout.flush()) {
    throw LostData(std::string("cannot write standard output: ") + std::strerror(errno));
  }
  if (trace != nullptr) {
    trace->check();
  }
}

// Runs every line; a line that cannot be run is reported and the next one runs.
int run(Input& input, KorISRAdapter& adapter, Output& output, TraceSink* trace) {
  int status = 0;
  std::string line;
  for (std::size_t number = 1;; ++number) {
    Read read = input.next(line);
    if (read == Read::end) {
      break;
    }
    std::optional<Report> report =
        read == Read::line
            ? runLine(adapter, number, line)
            : Report::usage(number, "the line is longer than " + std::to_string(maxLineBytes) + " bytes");
    if (report) {
      output.write(*report);
      status = std::max(status, report->status());
    }
    checkWritten(trace);
  }
  return status;
}

} // namespace

int main(int argc, char** argv) {
  // A closed output pipe is a write error like any other, on both registries
  // alike: the JVM would ignore SIGPIPE anyway.
  std::signal(SIGPIPE, SIG_IGN);
  auto parsed = parseOptions(argc, argv);
  if (auto* status = std::get_if<int>(&parsed)) {
    return *status;
  }
  const Options& options = std::get<Options>(parsed);
  try {
    ScriptFile script;
    std::shared_ptr<TraceSink> trace = startTrace(options);
    if (options.checkRegistry) {
      return checkRegistry(options, trace.get());
    }
    std::unique_ptr<Input> input = openInput(options, script);
    KorISRAdapter& adapter = startRegistry(options, trace.get());
    std::unique_ptr<Output> output =
        options.json ? makeJsonOutput(std::cout) : makeTextOutput(std::cout, std::cerr);
    return run(*input, adapter, *output, trace.get());
  } catch (const std::exception& error) {
    std::cerr << "legiorrug: " << error.what() << '\n';
    return 2;
  }
}
