#pragma once

#include "Options.hpp"
#include "Requirements.hpp"
#include "Trace.hpp"

#include <memory>
#include <ostream>

// One requirement's outcome.
struct RowResult {
  const Requirement* requirement = nullptr;
  Verdict verdict = Verdict::pass;
  std::vector<Evidence> evidence;
  std::string skipped; // why it did not run
  double seconds = 0;
};

struct Totals {
  int passed = 0;
  int warnings = 0;
  int failed = 0;
  int skipped = 0;
  double seconds = 0;
};

// Writes each requirement's outcome as it comes, then the totals.
class ConformanceReport {
public:
  virtual ~ConformanceReport() = default;
  virtual void row(const RowResult& result) = 0;
  virtual void end(const Totals& totals) = 0;
};

std::unique_ptr<ConformanceReport> makeTextReport(std::ostream& out, const std::string& prefix);
// One JSON object per requirement, then one with the totals.
std::unique_ptr<ConformanceReport> makeJsonReport(std::ostream& out);
// JUnit XML, one test suite per group; throws LostData when the file cannot be written.
void writeJunitReport(const std::string& path, const std::vector<RowResult>& results, const Totals& totals);

// legiorrug --check-registry: runs every requirement against the Java registry
// on the class path and reports; 0 when nothing failed, 1 when a requirement
// failed, 2 when the check could not run.
int checkRegistry(const Options& options, TraceSink* trace);
