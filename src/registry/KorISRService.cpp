#include "KorISRService.hpp"

namespace {

// Converted once; every record shares it.
const KorWstring& serviceLogSource() {
  static const KorWstring name = KorWstringConvertor::toKorWstring(L"KorISRService");
  return name;
}

} // namespace

KorISRService::KorISRService() : KorNamedLogSource(serviceLogSource()) {}

KorISRService::KorISRService(const KorWstring& serviceName, const KorWstring& namespaceOfService)
    : KorNamedLogSource(serviceLogSource()), name(serviceName), serviceNamespace(namespaceOfService) {}

KorISRService::KorISRService(const KorWstring& serviceName, const KorWstring& namespaceOfService,
                             const KorWstring& serviceDocument)
    : KorNamedLogSource(serviceLogSource()), name(serviceName), serviceNamespace(namespaceOfService),
      document(serviceDocument) {}

KorISRService::KorISRService(const KorISRService& other) = default;

// The target keeps its own log-source settings.
KorISRService& KorISRService::operator=(const KorISRService& other) {
  name = other.name;
  serviceNamespace = other.serviceNamespace;
  document = other.document;
  return *this;
}

KorISRService::~KorISRService() = default;
