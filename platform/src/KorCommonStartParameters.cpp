#include "KorCommonStartParameters.hpp"

#include <atomic>

namespace {

std::atomic<int> containerInfoReadCount{0};

KorContainerInfo& containerInfoValue() {
  static KorContainerInfo info;
  return info;
}

KorStartParameters& startParametersValue() {
  static KorStartParameters parameters;
  return parameters;
}

} // namespace

const KorContainerInfo& KorCommonStartParameters::containerInfo() {
  ++containerInfoReadCount;
  return containerInfoValue();
}

const KorStartParameters& KorCommonStartParameters::commonStartParameters() {
  return startParametersValue();
}

void KorCommonStartParameters::setContainerInfo(const KorContainerInfo& info) {
  containerInfoValue() = info;
}

void KorCommonStartParameters::setCommonStartParameters(const KorStartParameters& parameters) {
  startParametersValue() = parameters;
}

int KorCommonStartParameters::containerInfoReads() {
  return containerInfoReadCount;
}
