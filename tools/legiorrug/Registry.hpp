#pragma once

#include "Options.hpp"
#include "Trace.hpp"

#include <KorISRAdapter.hpp>

#include <stdexcept>

// The registry could not be started; what() is the reason, for a person.
class StartError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

// Does what the broker process does before its first registry call: the
// start parameters and, for the Java registry, the JVM, whose own printing
// goes to the trace file when there is one (trace may be null) and is
// otherwise hidden unless the options show it. Then returns the process's
// adapter. A JVM that stops the process while starting ends it with status 2.
KorISRAdapter& startRegistry(const Options& options, TraceSink* trace);
