#include "Options.hpp"

#include "Commands.hpp"
#include "Input.hpp"

#include <CLI/CLI.hpp>

#include <iostream>

namespace {

std::string commandList() {
  std::string text =
      "Commands, one per line. # starts a comment line; '...' quotes as is, \"...\" takes the\n"
      "escapes \\\\ \\\" \\n \\r \\t \\uXXXX. A line holds at most " +
      std::to_string(maxLineBytes) +
      " bytes.\n[ARG] is an optional in-argument: when given, its value is passed in, when left out\n"
      "the parameter starts empty; either way its value after the call is shown.\nT1 to T6 are texts, FLAG "
      "is true or false, INT a 32-bit integer.\n"
      "reset works on the in-memory registry only.\n";
  for (const Command& command : commands()) {
    text += "  " + usage(command) + "\n      " + std::string(command.summary) + "\n";
  }
  return text +
         "An argument written @FILE takes its value from the file, read as UTF-8 ('@...' stays as "
         "it is).\nquit and exit end the input. At a terminal: help [COMMAND], Ctrl-D ends the input, "
         "Tab completes a\ncommand name, Ctrl-C cancels the line or drops the rest of a command's output.\n"
         "In a script, a line that ends in a backslash outside quotes goes on in the next.\n"
         "dump writes a script that rebuilds the registry: its BTDs, services and the policies of "
         "each TYPE.\nA Java heap that runs out ends the run.\n"
         "Exit status: 0 every command succeeded, 1 an operation raised, 2 a line could not be run,\n"
         "the registry could not be started, or input, output or trace was lost.";
}

// CLI11 takes an empty --name= as no value and the next word as the value.
bool emptyValueGiven(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    std::string_view word = argv[i];
    if (word == "--") {
      return false;
    }
    if (word.size() > 2 && word.substr(0, 2) == "--" && word.find('=') == word.size() - 1) {
      std::cerr << "legiorrug: " << word.substr(0, word.size() - 1) << " needs a value\n";
      return true;
    }
  }
  return false;
}

const CLI::Validator nonEmpty(
    [](const std::string& value) { return value.empty() ? std::string("needs a value") : std::string(); }, "",
    "NON-EMPTY");

} // namespace

std::variant<Options, int> parseOptions(int argc, char** argv) {
  Options options;
  if (emptyValueGiven(argc, argv)) {
    return 2;
  }
  CLI::App app("Runs commands on the integration registry adapter, as a broker process would.", "legiorrug");
  app.set_version_flag("--version", "legiorrug " LEGIORRUG_VERSION);
  app.add_option("--container-kind", options.containerKind,
                 "Container kind of the start parameters: 1 is the in-memory registry, any other value "
                 "the Java registry in an embedded JVM")
      ->type_name("N")
      ->check(nonEmpty)
      ->capture_default_str();
  app.add_option("--name", options.name, "Name of the start parameters")->type_name("TEXT")->check(nonEmpty);
  app.add_option("--classpath", options.classPath,
                 "Class path entry put in front of the bundled registry's jars; repeat the option for "
                 "more entries")
      ->type_name("PATH")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->allow_extra_args(false)
      ->check(nonEmpty);
  app.add_option("--jvm-option", options.jvmOptions,
                 "JVM option, for example --jvm-option=-Xcheck:jni; repeat the option for more")
      ->type_name("OPT")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->allow_extra_args(false)
      ->check(nonEmpty);
  app.add_option("--trace", options.trace,
                 "Trace level: 0 to 2 only system errors; 3 trace items too, and the entry and exit of "
                 "the in-memory registry's calls; 4 and 5 debug items too: the entry and exit of the Java "
                 "registry's calls, the Java class lookup")
      ->type_name("LEVEL")
      ->check(CLI::Range(0, 5));
  app.add_option("--trace-file", options.traceFile,
                 "Append the trace, and what the JVM and the Java side print, to FILE instead of standard "
                 "error")
      ->type_name("FILE")
      ->check(nonEmpty);
  app.add_flag("--json", options.json, "One JSON object per command line on standard output");
  app.add_flag("--show-java-errors", options.showJavaErrors,
               "Let the JVM and the Java side print to standard error (hidden by default)");
  app.add_flag("--bail", options.bail, "End the run at the first line that fails");
  CLI::Option* check = app.add_flag(
      "--check-registry", options.checkRegistry,
      "Instead of running commands, check the Java registry on the class path against each "
      "requirement the library has of it, and report pass, fail or warning with the call that "
      "showed it (" LEGIORRUG_DOC_DIR "/check-registry.md). The checks use names of their own, starting with "
      "legiorrug-check-PID-, and delete what they made, so the registry may hold real data; "
      "setRepositoryDetails, migratePoliciesFromISR and stopMessageFlow are resolved, never called. "
      "Exit status 0 when no requirement fails");
  app.add_option("--junit", options.junitFile,
                 "With --check-registry, write the report as JUnit XML to FILE too")
      ->type_name("FILE")
      ->check(nonEmpty)
      ->needs(check);
  app.add_flag("--reference-registry", options.referenceRegistry,
               "With --check-registry, put the bundled reference registry behind --classpath; without it the "
               "check sees --classpath and the broker's exception classes alone")
      ->needs(check);
  app.add_flag("--no-history", options.noHistory, "At a terminal, keep no history in ~/.legiorrug_history");
  CLI::Option* file =
      app.add_option("-f", options.scriptFile,
                     "Read the commands from FILE instead of standard input; - is standard input")
          ->type_name("FILE")
          ->check(nonEmpty);
  app.add_option("script", options.scriptFile, "The same as -f SCRIPT")
      ->type_name("SCRIPT")
      ->check(nonEmpty)
      ->excludes(file);
  app.footer(commandList());
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {
      return app.exit(error); // --help or --version
    }
    std::cerr << "legiorrug: " << error.what() << " (legiorrug --help lists the options)\n";
    return 2;
  }
  return options;
}
