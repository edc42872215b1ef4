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

/// The process's start parameters, which a broker's platform sets and a
/// host of its own sets itself, before the first adapter is asked for.
///
/// Threads: set them from one thread before the first
/// KorISRAdapter::isrAdapter() call; afterwards any thread may read them.
class KorCommonStartParameters {
public:
  /// The container information; kind 0 until set.
  static const KorContainerInfo& containerInfo();
  /// The common start parameters; an empty name until set.
  static const KorStartParameters& commonStartParameters();

  /// Replaces the container information.
  static void setContainerInfo(const KorContainerInfo& info);
  /// Replaces the common start parameters.
  static void setCommonStartParameters(const KorStartParameters& parameters);
};
