#pragma once

#include "KorCommonStartParameters.hpp"

// Inside the broker the process's start parameters are set before the
// library loads; a host of its own sets them here, before the first adapter
// is asked for.
class KorStartParametersSetup {
public:
  static void setContainerInfo(const KorContainerInfo& info);
  static void setCommonStartParameters(const KorStartParameters& parameters);
  // For tests: how often containerInfo() was called.
  static int containerInfoReads();
};
