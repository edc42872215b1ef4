#pragma once

#include "KorExport.hpp"

#include <KorNamedLogSource.hpp>
#include <KorWstring.hpp>

/// A service of the registry: name, namespace and document. A trace source
/// named "KorISRService".
///
/// Threads: a value; copies may be used on different threads, one record is
/// not for a writer and another user at once.
class KOR_EXPORT KorISRService : public KorNamedLogSource {
public:
  /// An empty record, for getService to fill.
  KorISRService();
  /// A record with an empty document.
  KorISRService(const KorWstring& name, const KorWstring& serviceNamespace);
  /// A record of the three texts.
  KorISRService(const KorWstring& name, const KorWstring& serviceNamespace, const KorWstring& document);
  /// Copies the log source and the three texts.
  KorISRService(const KorISRService& other);
  /// Replaces the three texts; the log-source part stays as it was.
  KorISRService& operator=(const KorISRService& other);
  /// Destroys the texts, then the log source.
  ~KorISRService() override;

  /// The service's name.
  KorWstring name;
  /// The namespace that, with the name, identifies the service.
  KorWstring serviceNamespace;
  /// The service's document, passed through verbatim; empty in the records of getServices.
  KorWstring document;
};
