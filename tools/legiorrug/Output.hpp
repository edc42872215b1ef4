#pragma once

#include "Commands.hpp"

#include <memory>
#include <ostream>

// Writes each command line's report as it comes.
class Output {
public:
  virtual ~Output() = default;
  virtual void write(const Report& report) = 0;
};

// One JSON object per line on out.
std::unique_ptr<Output> makeJsonOutput(std::ostream& out);
// For a person: results on out, lines that could not be run on errors.
std::unique_ptr<Output> makeTextOutput(std::ostream& out, std::ostream& errors);
