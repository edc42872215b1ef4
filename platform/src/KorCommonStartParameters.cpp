#include "KorCommonStartParameters.hpp"

#include "KorStartParametersSetup.hpp"

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

void KorStartParametersSetup::setContainerInfo(const KorContainerInfo& info) {
  containerInfoValue() = info;
}

void KorStartParametersSetup::setCommonStartParameters(const KorStartParameters& parameters) {
  startParametersValue() = parameters;
}

int KorStartParametersSetup::containerInfoReads() {
  return containerInfoReadCount;
}
