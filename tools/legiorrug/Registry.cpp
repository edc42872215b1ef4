#include "Registry.hpp"

#include <KorCommonStartParameters.hpp>
#include <KorException.hpp>
#include <KorJVM.hpp>
#include <KorJVMStartup.hpp>
#include <KorLocalJavaStackFrame.hpp>
#include <KorLog.hpp>
#include <KorLogSink.hpp>
#include <KorStartParametersSetup.hpp>
#include <KorWstringText.hpp>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <mutex>

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

std::string describe(const KorException& error) {
  std::string text = error.what();
  for (const KorWstring& insert : error.textInserts()) {
    std::string more = KorWstringText::toUtf8(insert);
    if (!more.empty() && text.find(more) == std::string::npos) {
      text += "; " + more;
    }
  }
  return text;
}

// What the JVM prints while it starts is kept for the message when it fails,
// and passed on once it has started; after that it goes where the options say.
// The JVM prints from its own threads too.
struct JvmText {
  std::mutex mutex;
  bool starting = true;
  std::string startText;
  std::string options;
  bool show = false;
  TraceSink* trace = nullptr;

  void passOn(const std::string& text) const {
    if (show) {
      std::fwrite(text.data(), 1, text.size(), stderr);
    } else if (trace != nullptr) {
      trace->print(text);
    }
  }
} jvmText;

jint JNICALL jvmPrint(FILE*, const char* format, va_list arguments) {
  va_list copy;
  va_copy(copy, arguments);
  int size = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  if (size <= 0) {
    return size;
  }
  std::string text(static_cast<std::size_t>(size), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  std::lock_guard<std::mutex> lock(jvmText.mutex);
  if (jvmText.starting) {
    jvmText.startText += text;
  } else {
    jvmText.passOn(text);
  }
  // The count written: the JVM takes less as a failed write.
  return size;
}

void jvmStarted(const Options& options, TraceSink* trace) {
  std::lock_guard<std::mutex> lock(jvmText.mutex);
  jvmText.starting = false;
  jvmText.show = options.showJavaErrors;
  jvmText.trace = options.traceFile.empty() ? nullptr : trace;
  jvmText.passOn(jvmText.startText);
}

std::string startFailure(const std::string& otherwise) {
  std::string said;
  std::size_t start = 0;
  while (start < jvmText.startText.size()) {
    std::size_t end = std::min(jvmText.startText.find('\n', start), jvmText.startText.size());
    if (end > start) {
      said += (said.empty() ? "" : "; ") + jvmText.startText.substr(start, end - start);
    }
    start = end + 1;
  }
  return "cannot start the Java virtual machine (JVM options: " + jvmText.options +
         "): " + (said.empty() ? otherwise : said);
}

// The JVM calls this instead of exit(), for an option it refuses while it
// starts, and later only when something calls System.exit.
void JNICALL jvmExit(jint code) {
  std::cout.flush();
  if (jvmText.starting) {
    std::fprintf(stderr, "legiorrug: %s\n", startFailure("exit status " + std::to_string(code)).c_str());
  } else {
    std::fprintf(stderr, "legiorrug: the Java virtual machine exited with status %d\n",
                 static_cast<int>(code));
  }
  std::_Exit(2);
}

// The JVM calls this before it aborts: while it starts, for a setting it
// cannot meet (a heap too small). A later abort is a crash and stays one.
void JNICALL jvmAbort() {
  if (jvmText.starting) {
    std::fprintf(stderr, "legiorrug: %s\n", startFailure("it aborted").c_str());
    std::_Exit(2);
  }
}

[[noreturn]] void javaErrorsUnrouted(JNIEnv* env) {
  env->ExceptionClear();
  throw StartError("cannot redirect the Java standard error stream");
}

template <typename T> T checked(JNIEnv* env, T value) {
  if (env->ExceptionCheck() || value == nullptr) {
    javaErrorsUnrouted(env);
  }
  return value;
}

// The Java side's System.err (where a described exception's stack goes)
// follows the JVM's own printing: the trace file, or nowhere.
void routeJavaErrors(const std::string& traceFile) {
  KorLocalJavaStackFrame frame;
  JNIEnv* env = frame.env();
  if (!frame.pushed()) {
    javaErrorsUnrouted(env);
  }
  jobject stream = nullptr;
  if (!traceFile.empty()) {
    jclass file = checked(env, env->FindClass("java/io/FileOutputStream"));
    jmethodID open = checked(env, env->GetMethodID(file, "<init>", "(Ljava/lang/String;Z)V"));
    jstring path = checked(env, env->NewStringUTF(traceFile.c_str()));
    stream = checked(env, env->NewObject(file, open, path, JNI_TRUE));
  } else {
    jclass base = checked(env, env->FindClass("java/io/OutputStream"));
    jmethodID none =
        checked(env, env->GetStaticMethodID(base, "nullOutputStream", "()Ljava/io/OutputStream;"));
    stream = checked(env, env->CallStaticObjectMethod(base, none));
  }
  jclass print = checked(env, env->FindClass("java/io/PrintStream"));
  jmethodID make = checked(env, env->GetMethodID(print, "<init>", "(Ljava/io/OutputStream;Z)V"));
  jobject errors = checked(env, env->NewObject(print, make, stream, JNI_TRUE));
  jclass system = checked(env, env->FindClass("java/lang/System"));
  jmethodID setErr = checked(env, env->GetStaticMethodID(system, "setErr", "(Ljava/io/PrintStream;)V"));
  env->CallStaticVoidMethod(system, setErr, errors);
  if (env->ExceptionCheck()) {
    javaErrorsUnrouted(env);
  }
}

std::string joined(const std::vector<std::string>& entries) {
  std::string text;
  for (const std::string& entry : entries) {
    text += (text.empty() ? "" : ":") + entry;
  }
  return text.empty() ? "empty" : text;
}

// The class lookup names what it cannot resolve only in a debug item. While
// the registry starts, the trace level lets debug items through; this sink
// keeps those and passes on what the level the user chose lets through.
class LookupWatch : public KorLogSink {
public:
  LookupWatch(std::shared_ptr<KorLogSink> next, int level) : next_(std::move(next)), level_(level) {}

  void write(const KorLogRecord& record) override {
    bool debug = record.kind == KorLogKind::debugEntry || record.kind == KorLogKind::debugExit ||
                 record.kind == KorLogKind::debugTrace;
    const std::string first =
        debug && !record.inserts.empty() ? KorWstringText::toUtf8(record.inserts.front()) : "";
    if (first.rfind("Unable to locate", 0) == 0) {
      for (const KorWstring& insert : record.inserts) {
        unresolved_ += (unresolved_.empty() ? "" : " ") + KorWstringText::toUtf8(insert);
      }
    } else if (first == "Java error" && record.inserts.size() == 2) {
      javaError_ = KorWstringText::toUtf8(record.inserts.back());
    }
    if (next_ != nullptr && (record.kind == KorLogKind::systemError || level_ > (debug ? 3 : 2))) {
      next_->write(record);
    }
  }

  // What the lookup could not resolve, and the Java error it met; empty when
  // it found everything.
  std::string unresolved() const {
    return unresolved_.empty() || javaError_.empty() ? unresolved_ : unresolved_ + " (" + javaError_ + ")";
  }

private:
  std::shared_ptr<KorLogSink> next_;
  int level_;
  std::string unresolved_;
  std::string javaError_;
};

// The JVM skips an entry it cannot use without a word, and the registry then
// comes from the bundled jars while its user believes it tests their own.
void checkClassPath(const std::vector<std::string>& entries) {
  for (const std::string& entry : entries) {
    std::error_code error;
    fs::file_status status = fs::status(entry, error);
    if (!fs::exists(status)) {
      throw StartError("--classpath " + entry + ": no such file or folder");
    }
    if (fs::is_directory(status)) {
      fs::directory_iterator listing(entry, error);
      if (error) {
        throw StartError("--classpath " + entry + ": cannot read the folder: " + error.message());
      }
      continue;
    }
    std::ifstream jar(entry, std::ios::binary);
    char magic[4] = {};
    if (!jar.read(magic, sizeof magic) && !jar.eof()) {
      throw StartError("--classpath " + entry + ": cannot read it");
    }
    // A jar is a zip archive: a local file header, or the end record of an empty one.
    if (std::string_view(magic, 4) != std::string_view("PK\3\4", 4) &&
        std::string_view(magic, 4) != std::string_view("PK\5\6", 4)) {
      throw StartError("--classpath " + entry + ": neither a jar nor a folder of classes");
    }
  }
}

KorISRAdapter& startJavaAdapter(const std::vector<std::string>& classPath) {
  const int level = KorLog::iEffectiveLogFilter;
  std::shared_ptr<KorLogSink> sink = KorLogSink::install(nullptr);
  auto watch = std::make_shared<LookupWatch>(sink, level);
  KorLogSink::install(watch);
  KorLog::iEffectiveLogFilter = std::max(level, 4);
  struct Restore {
    std::shared_ptr<KorLogSink>& sink;
    int level;
    ~Restore() {
      KorLogSink::install(sink);
      KorLog::iEffectiveLogFilter = level;
    }
  } restore{sink, level};
  try {
    KorISRAdapter& adapter = *KorISRAdapter::isrAdapter();
    if (!watch->unresolved().empty()) {
      std::cerr << "legiorrug: " << watch->unresolved() << "; the calls that need it fail\n";
    }
    return adapter;
  } catch (const KorException& error) {
    throw StartError("cannot start the registry: " + describe(error) + " (class path: " + joined(classPath) +
                     (watch->unresolved().empty() ? "" : "; " + watch->unresolved()) + ")");
  }
}

} // namespace

KorISRAdapter& startRegistry(const Options& options, TraceSink* trace) {
  KorStartParameters parameters;
  try {
    parameters.name = KorWstringText::fromUtf8(options.name);
  } catch (const KorWstringEncodingError& error) {
    throw StartError("--name is not valid UTF-8 (byte " + std::to_string(error.offset() + 1) + ")");
  }
  KorStartParametersSetup::setContainerInfo(KorContainerInfo{options.containerKind});
  KorStartParametersSetup::setCommonStartParameters(parameters);

  std::vector<std::string> classPath = options.classPath;
  if (options.containerKind != 1) {
    checkClassPath(options.classPath);
    std::vector<std::string> jars = bundledJars();
    if (jars.empty()) {
      std::cerr
          << "legiorrug: the bundled registry jars are not beside the program; using --classpath alone\n";
    }
    // A broker brings the exception classes only: the check sees the author's registry alone.
    if (options.checkRegistry && !options.referenceRegistry && !jars.empty()) {
      jars.pop_back();
    }
    classPath.insert(classPath.end(), jars.begin(), jars.end());
    for (const std::string& option : options.jvmOptions) {
      jvmText.options += (jvmText.options.empty() ? "" : " ") + option;
    }
    jvmText.options = jvmText.options.empty() ? "none" : jvmText.options;
    // The shell answers Ctrl-C itself, so the JVM leaves the signals alone.
    std::vector<std::string> jvmOptions = {"-Xrs"};
    jvmOptions.insert(jvmOptions.end(), options.jvmOptions.begin(), options.jvmOptions.end());
    try {
      KorJVMStartup::create(KorJVMOptions{classPath, jvmOptions, &jvmPrint, &jvmExit, &jvmAbort});
    } catch (const KorException& error) {
      throw StartError(startFailure(describe(error)));
    }
    jvmStarted(options, trace);
    if (!options.showJavaErrors) {
      routeJavaErrors(options.traceFile);
    }
    return startJavaAdapter(classPath);
  }
  return *KorISRAdapter::isrAdapter();
}
