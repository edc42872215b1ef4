#pragma once

#include "KorWstring.hpp"

#include <cstdint>

struct KorContainerInfo {
  std::int32_t containerKind = 0; // 1 in stub containers
};

struct KorStartParameters {
  KorWstring name;
};

// Set by the host process before the first adapter is asked for.
class KorCommonStartParameters {
public:
  static const KorContainerInfo& containerInfo();
  static const KorStartParameters& commonStartParameters();

  static void setContainerInfo(const KorContainerInfo& info);
  static void setCommonStartParameters(const KorStartParameters& parameters);
  // For tests: how often containerInfo() was called.
  static int containerInfoReads();
};
