#pragma once

#include "KorExport.hpp"

#include <KorNamedLogSource.hpp>
#include <KorWstring.hpp>

// A service of the registry: name, namespace and document.
class KOR_EXPORT KorISRService : public KorNamedLogSource {
public:
  KorISRService();
  KorISRService(const KorWstring& name, const KorWstring& serviceNamespace);
  KorISRService(const KorWstring& name, const KorWstring& serviceNamespace, const KorWstring& document);
  KorISRService(const KorISRService& other);
  // Replaces the three texts; the log-source part stays as it was.
  KorISRService& operator=(const KorISRService& other);
  ~KorISRService() override;

  KorWstring name;
  KorWstring serviceNamespace;
  KorWstring document;
};
