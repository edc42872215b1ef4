#include "Options.hpp"

#include "Commands.hpp"

#include <CLI/CLI.hpp>

namespace {

std::string commandList() {
  std::string text =
      "Commands, one per line. # starts a comment line; '...' quotes as is, \"...\" takes the\n"
      "escapes \\\\ \\\" \\n \\r \\t \\uXXXX. reset works on the in-memory registry only.\n";
  for (const Command& command : commands()) {
    text += "  " + std::string(command.name) + (command.parameters.empty() ? "" : " ") +
            std::string(command.parameters) + "\n";
  }
  return text +
         "Exit status: 0 every command succeeded, 1 an operation raised, 2 a line could not be run or\n"
         "the registry could not be started.";
}

} // namespace

std::variant<Options, int> parseOptions(int argc, char** argv) {
  Options options;
  CLI::App app("Runs commands on the integration registry adapter, as a broker process would.", "legiorrug");
  app.add_option("--container-kind", options.containerKind,
                 "Container kind of the start parameters: 1 is the in-memory registry, any other value "
                 "the Java registry in an embedded JVM")
      ->type_name("N")
      ->capture_default_str();
  app.add_option("--name", options.name, "Name of the start parameters")->type_name("TEXT");
  app.add_option("--classpath", options.classPath,
                 "Class path entry put in front of the bundled registry's jars (repeatable)")
      ->type_name("PATH")
      ->allow_extra_args(false);
  app.add_option("--jvm-option", options.jvmOptions,
                 "JVM option, for example --jvm-option=-Xcheck:jni (repeatable)")
      ->type_name("OPT")
      ->allow_extra_args(false);
  app.add_option("--trace", options.trace, "Trace level, 0 to 5")
      ->type_name("LEVEL")
      ->check(CLI::Range(0, 5));
  app.add_option("--trace-file", options.traceFile, "Append the trace to FILE instead of standard error")
      ->type_name("FILE");
  app.add_flag("--json", options.json, "One JSON object per command line on standard output");
  app.add_option("-f", options.scriptFile, "Read the commands from FILE instead of standard input")
      ->check(CLI::ExistingFile);
  app.footer(commandList());
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    int status = app.exit(error);
    return status == 0 ? 0 : 2;
  }
  return options;
}
