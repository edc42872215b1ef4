#include "KorCommonStartParameters.hpp"

namespace {

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
