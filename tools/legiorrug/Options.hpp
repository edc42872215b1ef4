#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

struct Options {
  std::int32_t containerKind = 0;
  std::string name;
  std::vector<std::string> classPath;
  std::vector<std::string> jvmOptions;
  std::optional<int> trace;
  std::string traceFile;
  bool json = false;
  bool showJavaErrors = false;
  bool noHistory = false;
  bool bail = false;
  std::string scriptFile; // empty or "-": standard input
  bool checkRegistry = false;
  bool referenceRegistry = false;
  std::string junitFile;
};

// The options, or the exit status when the program stops here (after --help,
// --version or a bad option, all reported already).
std::variant<Options, int> parseOptions(int argc, char** argv);
