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
#include <KorWstringText.hpp>

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

// A Java heap that has run out fails every later line too, each after long
// garbage collection, so the run ends there.
bool heapExhausted(const Report& report) {
  auto* raised = std::get_if<std::shared_ptr<const KorException>>(&report.failure);
  if (raised == nullptr || !(*raised)->isFatal()) {
    return false;
  }
  const std::vector<KorWstring> inserts = (*raised)->textInserts();
  return std::any_of(inserts.begin(), inserts.end(), [](const KorWstring& insert) {
    return insert == KorWstringText::fromUtf16(u"Java heap space") ||
           insert == KorWstringText::fromUtf16(u"GC overhead limit exceeded");
  });
}

// Runs every line; a line that cannot be run is reported and the next one
// runs, unless bail says to stop at the first failure.
int run(Input& input, KorISRAdapter& adapter, Output& output, TraceSink* trace, bool bail) {
  int status = 0;
  std::string line;
  for (;;) {
    Read read = input.next(line);
    if (read == Read::end) {
      break;
    }
    std::size_t number = input.lineNumber();
    std::optional<Report> report =
        read == Read::line
            ? runLine(adapter, number, line, input.interactive() ? "help" : "legiorrug --help")
            : Report::usage(number, "the line is longer than " + std::to_string(maxLineBytes) +
                                        " bytes; a longer value can come from a file, written @FILE");
    if (report && report->endsInput) {
      break;
    }
    if (report) {
      output.write(*report);
      status = std::max(status, report->status());
    }
    checkWritten(trace);
    if (report && heapExhausted(*report)) {
      std::optional<std::size_t> left = input.skipRest();
      std::cerr << "legiorrug: line " << number << ": the Java heap is exhausted; the run stops here"
                << (left ? ", " + std::to_string(*left) + (*left == 1 ? " line" : " lines") + " not run" : "")
                << ". A larger heap may help: --jvm-option=-Xmx<size>, for example --jvm-option=-Xmx4g\n";
      return 2;
    }
    if (bail && status != 0) {
      break;
    }
  }
  // As other interactive shells do: a failed line was answered on the spot.
  return input.interactive() ? 0 : status;
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
    return run(*input, adapter, *output, trace.get(), options.bail);
  } catch (const std::exception& error) {
    std::cerr << "legiorrug: " << error.what() << '\n';
    return 2;
  }
}
