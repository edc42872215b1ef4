// The probe through which the requirements call the registry: each call named
// for the report, checked for a Java exception left pending, and what it made
// removed afterwards.

#include "Requirements.hpp"

#include "CommandLine.hpp"

#include <KorWstringText.hpp>

std::string shown(const KorWstring& text) {
  const std::size_t most = 120;
  std::u16string_view units = KorWstringText::view(text);
  return units.size() <= most
             ? quote(units)
             : quote(units.substr(0, most)) + "... (" + std::to_string(units.size()) + " units)";
}

std::string shown(const KorException& error) {
  std::string id = error.messageId();
  std::string text = std::string(error.isFatal() ? "fatal " : "") +
                     (id.empty() ? "message number " + std::to_string(error.messageNumber()) : id);
  std::string inserts;
  for (const KorExceptionInsert& insert : error.inserts()) {
    inserts += (inserts.empty() ? "" : ", ") +
               (insert.isNested() ? "[" + shown(insert.nested()) + "]" : shown(insert.text()));
  }
  return text + (inserts.empty() ? "" : ": " + inserts);
}

namespace {

struct LibraryMessage {
  unsigned drx;
  const char* meaning;
};

// What the broker makes of the library's own messages.
const LibraryMessage libraryMessages[] = {
    {3701, "the Java exception was not an LxRecoverableException, so the broker sees DRX3701 without the "
           "registry's message number"},
    {3702, "a fatal Java error, or a class or method the library could not resolve"},
    {3703, "a Java call answered null where the library needs an object"},
    {4374, "an insert of the Java exception could not be read"},
};

const LibraryMessage* libraryMessage(const KorException& error) {
  for (const LibraryMessage& message : libraryMessages) {
    if (error.messageNumber() == korMessageNumber(message.drx)) {
      return &message;
    }
  }
  return nullptr;
}

} // namespace

bool isLibraryMessage(const KorException& error) {
  return libraryMessage(error) != nullptr;
}

std::string shownRaise(const KorException& error) {
  const LibraryMessage* message = libraryMessage(error);
  return "raised " + shown(error) + (message != nullptr ? " (" + std::string(message->meaning) + ")" : "");
}

KorWstring Probe::name(std::u16string_view suffix) const {
  return KorWstringText::fromUtf16(run_.prefix + scope_ + u"-" + std::u16string(suffix));
}

void Probe::fail(std::string got, std::string expected) {
  throw Evidence{Verdict::fail, lastCall_, std::move(got), std::move(expected)};
}

void Probe::note(Verdict verdict, std::string got, std::string expected) {
  evidence.push_back({verdict, lastCall_, std::move(got), std::move(expected)});
}

void Probe::begin(const char* operation, std::initializer_list<KorWstring> arguments) {
  lastCall_ = std::string(operation) + "(";
  for (const KorWstring& argument : arguments) {
    lastCall_ += (&argument == arguments.begin() ? "" : ", ") + shown(argument);
  }
  lastCall_ += ")";
}

void Probe::end() noexcept {
  ++run_.calls;
  JNIEnv* env = KorJVM::getEnvironment();
  if (env->ExceptionCheck()) {
    env->ExceptionClear();
    std::lock_guard<std::mutex> lock(run_.mutex);
    run_.leftPending.push_back({Verdict::fail, lastCall_, "a Java exception still pending after the call",
                                "none: every Java exception is cleared before the call returns"});
  }
}

void Probe::made(Kind kind, const KorWstring& name, const KorWstring& typeOrNamespace) {
  made_.push_back({kind, name, typeOrNamespace});
}

void Probe::removeWhatWasMade() noexcept {
  KorISRAdapter& adapter = registry();
  for (auto made = made_.rbegin(); made != made_.rend(); ++made) {
    try {
      KorISRService service;
      if (made->kind == Kind::btd && adapter.btdExists(made->name)) {
        adapter.deleteBTD(made->name);
      } else if (made->kind == Kind::policy && adapter.policyExists(made->typeOrNamespace, made->name)) {
        adapter.deletePolicy(made->typeOrNamespace, made->name);
      } else if (made->kind == Kind::service && adapter.getService(made->name, service)) {
        adapter.deleteService(made->name);
      }
    } catch (const std::exception&) {
      // What cannot be removed was reported by the check that made it.
    }
  }
  made_.clear();
}
