#include "KorISRAdapter.hpp"

#include "KorISRAdapterImpl.hpp"
#include "KorISRAdapterStub.hpp"

#include <KorCommonStartParameters.hpp>
#include <KorLog.hpp>

namespace {

const char* const factoryLabel = "KorISRAdapter::isrAdapter";

bool tracing() {
  return KorLog::iEffectiveLogFilter > 2;
}

} // namespace

KorISRAdapter* KorISRAdapter::iISRAdapter = nullptr;

KorISRAdapter::KorISRAdapter() noexcept {
  iISRAdapter = this;
}

// Also runs when a derived constructor raises, so a half-built adapter never
// stays the instance.
KorISRAdapter::~KorISRAdapter() {
  iISRAdapter = nullptr;
}

KorISRAdapter* KorISRAdapter::isrAdapter(const KorWstring& name) {
  const KorLogToken token = tracing() ? KorLog::entry(factoryLabel, {name}) : 0;
  if (iISRAdapter == nullptr) {
    if (KorCommonStartParameters::containerInfo().containerKind == 1) {
      iISRAdapter = new KorISRAdapterStub;
    } else {
      iISRAdapter = new KorISRAdapterImpl(name);
    }
  }
  if (tracing()) {
    KorLog::exit(factoryLabel, token, {static_cast<const void*>(iISRAdapter)});
  }
  return iISRAdapter;
}

KorISRAdapter* KorISRAdapter::isrAdapter() {
  const KorLogToken token = tracing() ? KorLog::entry(factoryLabel) : 0;
  const KorWstring name = KorCommonStartParameters::commonStartParameters().name;
  KorISRAdapter* adapter = isrAdapter(name);
  if (tracing()) {
    KorLog::exit(factoryLabel, token);
  }
  return adapter;
}
