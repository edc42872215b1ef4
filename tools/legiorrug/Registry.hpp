#pragma once

#include "Options.hpp"

#include <KorISRAdapter.hpp>

#include <stdexcept>

// The registry could not be started; what() is the reason, for a person.
class StartError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

// Does what the broker process does before its first registry call: the
// trace, the start parameters and, for the Java registry, the JVM. Then
// returns the process's adapter.
KorISRAdapter& startRegistry(const Options& options);
