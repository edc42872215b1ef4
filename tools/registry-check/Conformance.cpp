#include "Conformance.hpp"

#include "GlobalReferences.hpp"
#include "Input.hpp"
#include "Registry.hpp"

#include <KorJVM.hpp>
#include <KorJVMStartup.hpp>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <iostream>
#include <map>

#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

bool jvmRunning() {
  try {
    return KorJVMStartup::javaVM() != nullptr;
  } catch (const std::exception&) {
    return false;
  }
}

// Why the row cannot run, or empty.
std::string skipReason(const Requirement& row, const std::map<std::string, const RowResult*>& done,
                       const std::string& unresolvedAt) {
  const bool resolved = unresolvedAt.empty();
  if (!resolved && row.group == "resolution") {
    return "unresolved: the library resolves the table in one pass that stops at \"" + unresolvedAt +
           "\", so a broker meets this one unresolved too";
  }
  if (!resolved && (row.usesAdapter || row.id == "adapter")) {
    return "needs every class and method to resolve: the library resolves them in one pass that stops at "
           "the first one missing";
  }
  std::vector<std::string> needs = row.needs;
  if (row.usesAdapter) {
    needs.insert(needs.begin(), "adapter");
  }
  for (const std::string& id : needs) {
    const RowResult* need = done.at(id);
    if (need->verdict == Verdict::fail || need->verdict == Verdict::skip) {
      return "needs \"" + need->requirement->name + "\", which " +
             (need->verdict == Verdict::fail ? "failed" : "did not run");
    }
  }
  return {};
}

// Threads that meet the same fault report it once, with a count.
std::vector<Evidence> merged(const std::vector<Evidence>& evidence) {
  std::vector<Evidence> distinct;
  std::vector<int> seen;
  for (const Evidence& item : evidence) {
    auto same = std::find_if(distinct.begin(), distinct.end(), [&](const Evidence& other) {
      return other.call == item.call && other.got == item.got && other.verdict == item.verdict;
    });
    if (same == distinct.end()) {
      distinct.push_back(item);
      seen.push_back(1);
    } else {
      ++seen[static_cast<std::size_t>(same - distinct.begin())];
    }
  }
  for (std::size_t i = 0; i < distinct.size(); ++i) {
    distinct[i].got += seen[i] > 1 ? " (" + std::to_string(seen[i]) + " times)" : "";
  }
  return distinct;
}

RowResult runRow(const Requirement& row, RunState& run) {
  RowResult result;
  result.requirement = &row;
  std::u16string scope(row.id.begin(), row.id.end());
  std::replace(scope.begin(), scope.end(), u' ', u'-');
  Probe probe(run, scope);
  const auto start = Clock::now();
  try {
    row.check(probe);
  } catch (const Evidence& evidence) {
    probe.evidence.push_back(evidence);
  } catch (const KorException& error) {
    probe.evidence.push_back({Verdict::fail, probe.lastCall(), shownRaise(error), "an answer: " + row.name});
  } catch (const std::exception& error) {
    probe.evidence.push_back({Verdict::fail, probe.lastCall(), error.what(), "an answer: " + row.name});
  }
  if (row.usesAdapter) {
    probe.removeWhatWasMade();
  }
  result.seconds = secondsSince(start);
  result.evidence = merged(probe.evidence);
  for (const Evidence& evidence : result.evidence) {
    result.verdict = std::max(result.verdict, evidence.verdict);
  }
  return result;
}

void count(Totals& totals, Verdict verdict) {
  ++(verdict == Verdict::pass      ? totals.passed
     : verdict == Verdict::warning ? totals.warnings
     : verdict == Verdict::fail    ? totals.failed
                                   : totals.skipped);
}

} // namespace

int checkRegistry(const Options& options, TraceSink* trace) {
  if (options.containerKind == 1 || !options.scriptFile.empty()) {
    std::cerr << "legiorrug: --check-registry checks the Java registry and runs no script; leave out "
              << (options.containerKind == 1 ? "--container-kind 1" : "the script") << '\n';
    return 2;
  }
  const auto start = Clock::now();
  RunState run;
  const std::string prefix = "legiorrug-check-" + std::to_string(getpid()) + "-";
  run.prefix.assign(prefix.begin(), prefix.end());
  try {
    run.adapter = &startRegistry(options, trace);
  } catch (const StartError& error) {
    if (!jvmRunning()) {
      throw;
    }
    run.startFailure = error.what();
  }
  run.globalReferencesBefore =
      countGlobalReferences(KorJVMStartup::javaVM()) ? liveGlobalReferences() : noCount;

  std::vector<Requirement> rows = resolutionRequirements();
  std::vector<Requirement> more = registryRequirements();
  rows.insert(rows.end(), more.begin(), more.end());
  std::unique_ptr<ConformanceReport> report =
      options.json ? makeJsonReport(std::cout) : makeTextReport(std::cout, prefix);
  std::vector<RowResult> results;
  results.reserve(rows.size());
  std::map<std::string, const RowResult*> done;
  Totals totals;
  std::string unresolvedAt;
  for (const Requirement& row : rows) {
    std::string skipped = skipReason(row, done, unresolvedAt);
    RowResult result;
    if (skipped.empty()) {
      result = runRow(row, run);
    } else {
      result.requirement = &row;
      result.verdict = Verdict::skip;
      result.skipped = std::move(skipped);
    }
    if (unresolvedAt.empty() && row.group == "resolution" && result.verdict == Verdict::fail) {
      unresolvedAt = row.name;
    }
    count(totals, result.verdict);
    results.push_back(std::move(result));
    done[row.id] = &results.back();
    report->row(results.back());
    if (!std::cout.flush()) {
      throw LostData(std::string("cannot write standard output: ") + std::strerror(errno));
    }
  }
  totals.seconds = secondsSince(start);
  report->end(totals);
  if (!std::cout.flush()) {
    throw LostData(std::string("cannot write standard output: ") + std::strerror(errno));
  }
  if (!options.junitFile.empty()) {
    writeJunitReport(options.junitFile, results, totals);
  }
  if (trace != nullptr) {
    trace->check();
  }
  return totals.failed > 0 ? 1 : 0;
}
