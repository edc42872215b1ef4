/// @file
/// Setting the start parameters for a host of its own. Threads: set them from
/// one thread before the first adapter is asked for, never while others read.
#pragma once

#include "KorCommonStartParameters.hpp"

/// Inside the broker the process's start parameters are set before the
/// library loads; a host of its own sets them here, before the first adapter
/// is asked for.
class KorStartParametersSetup {
public:
  /// Replaces the container information.
  static void setContainerInfo(const KorContainerInfo& info);
  /// Replaces the common start parameters.
  static void setCommonStartParameters(const KorStartParameters& parameters);
  /// For tests: how often containerInfo() was called.
  static int containerInfoReads();
};
