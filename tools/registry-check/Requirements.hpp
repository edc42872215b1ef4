#pragma once

#include <KorException.hpp>
#include <KorISRAdapter.hpp>
#include <KorJVM.hpp>

#include <atomic>
#include <functional>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <string>
#include <type_traits>
#include <vector>

// What the library requires of a Java registry, one row per requirement, and
// the probe through which a row's check calls the registry.

enum class Verdict { pass, warning, fail, skip };

// One call that showed a requirement unmet: the call, what came back, and what
// the library needs instead.
struct Evidence {
  Verdict verdict = Verdict::fail;
  std::string call;
  std::string got;
  std::string expected;
};

// What a run shares between its rows and threads.
struct RunState {
  KorISRAdapter* adapter = nullptr; // null when the registry could not start
  std::string startFailure;
  std::u16string prefix; // every name a check makes starts with it
  std::atomic<long> calls{0};
  std::mutex mutex;
  std::vector<Evidence> leftPending; // calls after which a Java exception was pending
  long globalReferencesBefore = 0;
};

// A text as the report shows it: quoted, escaped, a long one cut short.
std::string shown(const KorWstring& text);
// A raised exception as the report shows it.
std::string shown(const KorException& error);
// The same after "raised", with what the broker makes of the library's own messages.
std::string shownRaise(const KorException& error);
// Raised by the library itself (DRX3701 to DRX3703, DRX4374), not translated from the registry's exception.
bool isLibraryMessage(const KorException& error);

class Probe {
public:
  Probe(RunState& run, std::u16string scope) : run_(run), scope_(std::move(scope)) {}

  KorISRAdapter& registry() const { return *run_.adapter; }
  RunState& run() const { return run_; }
  // A name of this check's own: the run's prefix, the check's scope, suffix.
  KorWstring name(std::u16string_view suffix) const;

  // Calls op, an adapter operation shown as operation(arguments) in the report.
  // What it raises passes on, for the row to report with this call.
  template <typename Op>
  auto call(const char* operation, std::initializer_list<KorWstring> arguments, Op&& op) {
    begin(operation, arguments);
    struct After {
      Probe& probe;
      ~After() { probe.end(); }
    } after{*this};
    return op();
  }
  // The same, for an operation that is meant to raise: what it raised, or null.
  template <typename Op>
  std::shared_ptr<const KorException> raised(const char* operation,
                                             std::initializer_list<KorWstring> arguments, Op&& op) {
    try {
      call(operation, arguments, std::forward<Op>(op));
    } catch (const KorException& error) {
      return error.clone();
    }
    return nullptr;
  }

  // The last call did not answer as the library needs: the check ends here,
  // with this evidence thrown to the runner.
  [[noreturn]] void fail(std::string got, std::string expected);
  void expect(bool met, const std::string& got, const std::string& expected) {
    if (!met) {
      fail(got, expected);
    }
  }
  // Records what the last call showed and goes on.
  void note(Verdict verdict, std::string got, std::string expected);

  // Something the check made, removed after the check whatever happened.
  enum class Kind { btd, policy, service };
  void made(Kind kind, const KorWstring& name, const KorWstring& typeOrNamespace = KorWstring());
  void removeWhatWasMade() noexcept;

  const std::string& lastCall() const { return lastCall_; }
  std::vector<Evidence> evidence;

private:
  void begin(const char* operation, std::initializer_list<KorWstring> arguments);
  void end() noexcept;

  struct Made {
    Kind kind;
    KorWstring name;
    KorWstring typeOrNamespace;
  };
  RunState& run_;
  std::u16string scope_;
  std::string lastCall_;
  std::vector<Made> made_;
};

struct Requirement {
  std::string id; // for other rows' needs
  std::string group;
  std::string name; // what the library needs, as the report names it
  // The rows that must have passed for this one to mean something; a row that
  // calls the adapter needs every resolution row too.
  std::vector<std::string> needs;
  bool usesAdapter = true;
  std::function<void(Probe&)> check;
};

// Each class and method the library resolves, one row each.
std::vector<Requirement> resolutionRequirements();
// What the library needs of the registry's answers, in the order they run.
std::vector<Requirement> registryRequirements();
