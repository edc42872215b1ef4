#pragma once

#include "KorWstring.hpp"

#include <cstdint>

struct KorContainerInfo {
  std::int32_t containerKind = 0; // 1 in stub containers
};

struct KorStartParameters {
  KorWstring name;
};

// What the process was started with; the factory reads both.
class KorCommonStartParameters {
public:
  static const KorContainerInfo& containerInfo();
  static const KorStartParameters& commonStartParameters();
};
