#include "Input.hpp"

#include "Commands.hpp"
#include "Utf.hpp"

#include <KorWstringText.hpp>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <utility>

#include <clocale>

#include <editline/readline.h>
#include <langinfo.h>
#include <poll.h>
#include <pthread.h>
#include <unistd.h>

namespace {

class FileInput : public Input {
public:
  FileInput(std::FILE* file, std::string name) : file_(file), name_(std::move(name)) {}

  Read next(std::string& line) override {
    line.clear();
    number_ = pieces_ + 1;
    Read read = Read::line;
    std::size_t start = 0;
    while ((read = readPiece(line)) == Read::line && continues(std::string_view(line).substr(start))) {
      line.pop_back();
      start = line.size();
    }
    return read == Read::end && number_ <= pieces_ ? Read::line : read;
  }

  std::size_t lineNumber() const override { return number_; }

  std::optional<std::size_t> skipRest() override {
    std::size_t count = 0;
    int c = 0;
    int last = '\n';
    while ((c = getc_unlocked(file_)) != EOF) {
      count += c == '\n' ? 1 : 0;
      last = c;
    }
    if (std::ferror(file_)) {
      throw LostData("cannot read " + name_ + ": " + std::strerror(errno));
    }
    return count + (last == '\n' ? 0 : 1);
  }

private:
  // Appends the next physical line, which alone must fit maxLineBytes.
  Read readPiece(std::string& line) {
    const std::size_t start = line.size();
    bool tooLong = false;
    int c = 0;
    while ((c = getc_unlocked(file_)) != EOF && c != '\n') {
      if (line.size() - start < maxLineBytes) {
        line += static_cast<char>(c);
      } else {
        tooLong = true;
      }
    }
    if (c == EOF && std::ferror(file_)) {
      throw LostData("cannot read " + name_ + ": " + std::strerror(errno));
    }
    if (c == EOF && line.size() == start && !tooLong) {
      return Read::end;
    }
    if (pieces_++ == 0 && line.compare(0, 3, "\xEF\xBB\xBF") == 0) {
      line.erase(0, 3);
    }
    return tooLong ? Read::tooLong : Read::line;
  }

  std::FILE* file_;
  std::string name_;
  std::size_t pieces_ = 0; // physical lines read
  std::size_t number_ = 0;
};

// Ctrl-C at a terminal, counted: each part of a session compares the count
// with the one it started at.
volatile std::sig_atomic_t interruptions = 0;

void onInterrupt(int) {
  interruptions = interruptions + 1;
}

std::sig_atomic_t readStart = 0;

// The bytes the terminal sent for the line being read: what is not UTF-8
// fails the line, as it would in a script.
std::string typed;

// A byte read after a sequence it cut short, which starts the next key.
int pending = EOF;

// Reads one byte from the terminal. SIGINT is blocked except inside ppoll, so
// a Ctrl-C at any moment of the read ends it instead of being retried away.
int readByte(std::FILE* stream) {
  if (pending != EOF) {
    return std::exchange(pending, EOF);
  }
  sigset_t interrupt;
  sigset_t previous;
  sigemptyset(&interrupt);
  sigaddset(&interrupt, SIGINT);
  pthread_sigmask(SIG_BLOCK, &interrupt, &previous);
  pollfd input{fileno(stream), POLLIN, 0};
  int ready = 0;
  while (interruptions == readStart && (ready = ppoll(&input, 1, nullptr, &previous)) < 0 && errno == EINTR) {
  }
  pthread_sigmask(SIG_SETMASK, &previous, nullptr);
  unsigned char key = 0;
  if (interruptions != readStart || ready < 0 || read(input.fd, &key, 1) != 1) {
    return EOF;
  }
  typed += static_cast<char>(key);
  return key;
}

// Reads one character for the line editor, which takes what this returns as
// a whole character whatever the locale.
int readKey(std::FILE* stream) {
  const int first = readByte(stream);
  if (first < 0xC0) {
    return first; // EOF, ASCII, or a stray continuation byte that fails the line
  }
  const int length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  int codePoint = first & (0x7F >> length);
  for (int i = 1; i < length; ++i) {
    const int next = readByte(stream);
    if (next == EOF || (next & 0xC0) != 0x80) {
      pending = next;
      return 0xFFFD;
    }
    codePoint = codePoint << 6 | (next & 0x3F);
  }
  return codePoint;
}

char* nextCommandName(const char* prefix, int state) {
  static std::size_t index = 0;
  index = state == 0 ? 0 : index;
  const std::size_t length = std::strlen(prefix);
  while (index < commands().size()) {
    std::string_view name = commands()[index++].name;
    if (name.compare(0, length, prefix) == 0) {
      return strdup(std::string(name).c_str());
    }
  }
  return nullptr;
}

// Command names complete the first word only; the arguments are free text.
char** complete(const char* prefix, int start, int) {
  rl_attempted_completion_over = 1;
  return start == 0 ? rl_completion_matches(prefix, nextCommandName) : nullptr;
}

// Standard output at a terminal: a command's output goes out in small writes,
// and a Ctrl-C once it has begun drops the rest of it.
class DroppingOutput : public std::streambuf {
public:
  // The bytes dropped since the last call; what follows is a new command's output.
  std::size_t restart() {
    started_ = false;
    return std::exchange(dropped_, 0);
  }

protected:
  int overflow(int c) override {
    if (c != traits_type::eof()) {
      pending_ += static_cast<char>(c);
    }
    return traits_type::not_eof(c);
  }

  std::streamsize xsputn(const char* data, std::streamsize size) override {
    pending_.append(data, static_cast<std::size_t>(size));
    return size;
  }

  int sync() override {
    if (!started_) {
      started_ = true;
      outputStart_ = interruptions;
    }
    std::size_t sent = 0;
    while (sent < pending_.size() && interruptions == outputStart_) {
      ssize_t written =
          write(STDOUT_FILENO, pending_.data() + sent, std::min<std::size_t>(pending_.size() - sent, 4096));
      if (written < 0 && errno != EINTR) {
        return -1;
      }
      sent += written > 0 ? static_cast<std::size_t>(written) : 0;
    }
    dropped_ += pending_.size() - sent;
    pending_.clear();
    return 0;
  }

private:
  std::string pending_;
  bool started_ = false;
  std::sig_atomic_t outputStart_ = 0;
  std::size_t dropped_ = 0;
};

// The line editor hands out lines as the locale encodes them, and commands
// are UTF-8 whatever the locale the shell started in. A JVM started after
// this sets the locale from the environment again, so each read calls it.
void useUtf8Characters() {
  if (std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0) {
    return;
  }
  const char* locale = std::setlocale(LC_CTYPE, "");
  if ((locale == nullptr || std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0) &&
      std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr) {
    throw LostData("the terminal needs a UTF-8 locale, and neither the one set nor C.UTF-8 is available");
  }
}

class TerminalInput : public Input {
public:
  explicit TerminalInput(const TerminalOptions& options) : options_(options) {
    useUtf8Characters();
    rl_outstream = options_.prompts;
    rl_catch_signals = 0;
    rl_getc_function = readKey;
    rl_attempted_completion_function = complete;
    if (!options_.historyFile.empty()) {
      stifle_history(1000);
      read_history(options_.historyFile.c_str());
    }
    // No SA_RESTART: Ctrl-C at the prompt ends the read, which cancels the
    // line, and ends a write to the terminal.
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    sigaction(SIGINT, &action, nullptr);
    std::fputs("legiorrug " LEGIORRUG_VERSION ": \"help\" lists the commands, Ctrl-D ends the session.\n",
               options_.prompts);
    if (isatty(STDOUT_FILENO) != 0) {
      std::cout.flush();
      standardOutput_ = std::cout.rdbuf(&output_);
    }
  }

  ~TerminalInput() override {
    if (standardOutput_ != nullptr) {
      std::cout.rdbuf(standardOutput_);
    }
    if (!options_.historyFile.empty()) {
      write_history(options_.historyFile.c_str());
    }
  }

  std::optional<std::size_t> skipRest() override { return std::nullopt; }

  bool interactive() const override { return true; }

  std::size_t lineNumber() const override { return number_; }

  Read next(std::string& line) override {
    for (;;) {
      std::size_t dropped = output_.restart();
      if (dropped > 0) {
        std::fprintf(options_.prompts, "legiorrug: interrupted; %zu bytes of output dropped\n", dropped);
      } else if (interruptions != readStart) {
        std::fputs("legiorrug: interrupted; the operation had run to its end\n", options_.prompts);
      }
      readStart = interruptions;
      typed.clear();
      pending = EOF;
      useUtf8Characters();
      char* text = readline("legiorrug> ");
      bool cancelled = interruptions != readStart;
      readStart = interruptions;
      if (text == nullptr && !cancelled) {
        std::fputc('\n', options_.prompts);
        return Read::end;
      }
      line = text == nullptr ? "" : text;
      std::free(text);
      if (cancelled) {
        std::fputs("^C\n", options_.prompts);
        continue;
      }
      if (std::optional<std::size_t> bad = invalidByte()) {
        // Fails as that byte would in a script.
        line = typed.substr(0, *bad) + '\xFF';
        ++number_;
        return Read::line;
      }
      if (line.find_first_not_of(" \t") != std::string::npos) {
        add_history(line.c_str());
      }
      auto words = splitLine(line);
      const Words* split = std::get_if<Words>(&words);
      if (split == nullptr || split->empty() || split->size() > 2 || split->front() != Word{u"help"}) {
        ++number_;
        return Read::line;
      }
      help(split->size() == 2 ? toWtf8(split->back().text) : "");
    }
  }

private:
  static std::optional<std::size_t> invalidByte() {
    try {
      KorWstringText::fromUtf8(typed);
    } catch (const KorWstringEncodingError& error) {
      return error.offset();
    }
    return std::nullopt;
  }

  void help(const std::string& name) const {
    for (const Command& command : commands()) {
      if (name.empty() || command.name == name) {
        std::fprintf(options_.prompts, "  %s\n", usage(command).c_str());
        if (!name.empty()) {
          std::fprintf(options_.prompts, "    %.*s\n", static_cast<int>(command.summary.size()),
                       command.summary.data());
        }
      }
    }
    bool known = std::any_of(commands().begin(), commands().end(),
                             [&name](const Command& command) { return command.name == name; });
    if (!name.empty() && !known) {
      std::fprintf(options_.prompts, "legiorrug: no command %s\n", name.c_str());
    }
    if (name.empty()) {
      std::fputs("  help [COMMAND]\n", options_.prompts);
    }
  }

  TerminalOptions options_;
  std::size_t number_ = 0;
  DroppingOutput output_;
  std::streambuf* standardOutput_ = nullptr;
};

} // namespace

std::unique_ptr<Input> makeFileInput(std::FILE* file, const std::string& name) {
  return std::make_unique<FileInput>(file, name);
}

std::unique_ptr<Input> makeTerminalInput(const TerminalOptions& options) {
  return std::make_unique<TerminalInput>(options);
}
