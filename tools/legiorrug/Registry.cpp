#include "Registry.hpp"

#include <KorCommonStartParameters.hpp>
#include <KorException.hpp>
#include <KorJVM.hpp>
#include <KorLog.hpp>

#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <system_error>

namespace {

namespace fs = std::filesystem;

const char* const jarNames[] = {"legiorrug-plugin.jar", "legiorrug-registry.jar"};

// The bundled jars: beside the program in the build tree (tools/ and java/),
// or under share/ in an installed tree (bin/ and share/legiorrug/java/).
std::vector<std::string> bundledJars() {
  std::error_code error;
  fs::path program = fs::read_symlink("/proc/self/exe", error);
  if (error) {
    return {};
  }
  fs::path base = program.parent_path().parent_path();
  for (const fs::path& directory : {base / "java", base / "share" / "legiorrug" / "java"}) {
    if (fs::exists(directory / jarNames[1], error)) {
      return {directory / jarNames[0], directory / jarNames[1]};
    }
  }
  return {};
}

// Whatever the JVM prints goes to standard error, so that standard output
// holds the results alone.
jint JNICALL jvmPrint(FILE*, const char* format, va_list arguments) {
  return std::vfprintf(stderr, format, arguments);
}

std::string describe(const KorException& error) {
  std::string text = error.what();
  for (const KorWstring& insert : error.textInserts()) {
    std::string more = insert.toUtf8();
    if (!more.empty() && text.find(more) == std::string::npos) {
      text += "; " + more;
    }
  }
  return text;
}

void startTrace(const Options& options) {
  if (!options.traceFile.empty()) {
    try {
      KorLog::setSink(std::make_shared<KorLogTextSink>(options.traceFile));
    } catch (const std::system_error& error) {
      throw StartError("cannot open the trace file " + options.traceFile + ": " + error.what());
    }
  } else if (options.trace) {
    KorLog::setSink(std::make_shared<KorLogTextSink>());
  }
  if (options.trace) {
    KorLog::iEffectiveLogFilter = *options.trace;
  }
}

std::string joined(const std::vector<std::string>& entries) {
  std::string text;
  for (const std::string& entry : entries) {
    text += (text.empty() ? "" : ":") + entry;
  }
  return text.empty() ? "empty" : text;
}

} // namespace

KorISRAdapter& startRegistry(const Options& options) {
  startTrace(options);
  KorStartParameters parameters;
  try {
    parameters.name = KorWstring::fromUtf8(options.name);
  } catch (const KorWstringEncodingError& error) {
    throw StartError("--name is not valid UTF-8 (byte " + std::to_string(error.offset() + 1) + ")");
  }
  KorCommonStartParameters::setContainerInfo(KorContainerInfo{options.containerKind});
  KorCommonStartParameters::setCommonStartParameters(parameters);

  std::vector<std::string> classPath = options.classPath;
  if (options.containerKind != 1) {
    std::vector<std::string> jars = bundledJars();
    if (jars.empty()) {
      std::cerr
          << "legiorrug: the bundled registry jars are not beside the program; using --classpath alone\n";
    }
    classPath.insert(classPath.end(), jars.begin(), jars.end());
    try {
      KorJVM::create(KorJVMOptions{classPath, options.jvmOptions, &jvmPrint});
    } catch (const KorException& error) {
      throw StartError("cannot start the Java virtual machine: " + describe(error));
    }
  }
  try {
    return *KorISRAdapter::isrAdapter();
  } catch (const KorException& error) {
    throw StartError("cannot start the registry: " + describe(error) + " (class path: " + joined(classPath) +
                     ")");
  }
}
