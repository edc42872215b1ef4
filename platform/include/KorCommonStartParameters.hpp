/// @file
/// The process's start parameters, as the library reads them. Threads: set
/// once before the first adapter is asked for; afterwards any thread may read.
#pragma once

#include "KorWstring.hpp"

#include <cstdint>

/// The container information of the process's start parameters.
struct KorContainerInfo {
  /// 1 in stub containers (the in-memory registry); any other value hosts the Java registry.
  std::int32_t containerKind = 0; // 1 in stub containers
};

/// The common start parameters of the process.
struct KorStartParameters {
  /// Handed to the Java-backed adapter by KorISRAdapter::isrAdapter().
  KorWstring name;
};

/// What the process was started with; the factory reads both.
class KorCommonStartParameters {
public:
  /// The container information; kind 0 until set.
  static const KorContainerInfo& containerInfo();
  /// The common start parameters; an empty name until set.
  static const KorStartParameters& commonStartParameters();
};
