#pragma once

#include <KorISRAdapter.hpp>

#include <string>
#include <vector>

// The registry as a script of this shell's commands that rebuilds it in an
// empty registry: every BTD with its content, every service with its
// document, and the policies of each type named, each with its URI, in the
// order the registry lists them. Texts longer than a line holds are
// continued over lines. What the dump cannot hold, it says in comment lines
// and on standard error.
std::string dumpRegistry(KorISRAdapter& adapter, const std::vector<KorWstring>& policyTypes);
