#pragma once

#include "KorExport.hpp"
#include "KorISRService.hpp"

#include <KorWstring.hpp>

#include <vector>

/// The broker's one way into the integration registry: policies, business
/// transaction definitions (BTDs), services and administrative requests.
/// Failures are raised as KorRecoverableException or KorFatalException.
///
/// Threads: the first isrAdapter() call must return before any other thread
/// calls it; afterwards it only reads the instance. No adapter may be
/// destroyed or constructed while other threads use one. The Java-backed
/// adapter's operations may be called from any number of threads at once;
/// the in-memory registry's (KorISRAdapterStub) must be serialised by the
/// callers.
class KOR_EXPORT KorISRAdapter {
public:
  /// The process-wide adapter, created on first use: the in-memory registry
  /// in a stub container (container kind 1), the Java-backed adapter
  /// otherwise, which keeps a copy of name. Later calls return the same
  /// object and ignore name. The first call must finish before other threads
  /// call. Raises what the Java-backed adapter's construction raises.
  static KorISRAdapter* isrAdapter(const KorWstring& name);
  /// The same, named after the start parameters.
  static KorISRAdapter* isrAdapter();

  /// Not copyable.
  KorISRAdapter(const KorISRAdapter&) = delete;
  /// Not assignable.
  KorISRAdapter& operator=(const KorISRAdapter&) = delete;
  /// Clears the process-wide adapter, whichever adapter is destroyed; the
  /// next isrAdapter() call creates a new one.
  virtual ~KorISRAdapter();

  /// Asks the registry to migrate its policies.
  virtual void migratePoliciesFromISR() = 0;
  /// Creates the policy name of the given type with document; uri is set to the URI the registry gives.
  virtual void createPolicy(const KorWstring& type, const KorWstring& name, const KorWstring& document,
                            KorWstring& uri) = 0;
  /// Replaces the document of an existing policy; uri is set to its URI.
  virtual void updatePolicy(const KorWstring& type, const KorWstring& name, const KorWstring& document,
                            KorWstring& uri) = 0;
  /// Whether the policy name of the given type exists.
  virtual bool policyExists(const KorWstring& type, const KorWstring& name) = 0;
  /// Sets document and uri to those of the policy name of the given type.
  virtual void getPolicy(const KorWstring& type, const KorWstring& name, KorWstring& document,
                         KorWstring& uri) = 0;
  /// Deletes the policy name of the given type.
  virtual void deletePolicy(const KorWstring& type, const KorWstring& name) = 0;
  /// Creates the BTD name with content; uri is set to the URI the registry gives.
  virtual void createBTD(const KorWstring& name, const KorWstring& content, KorWstring& uri) = 0;
  /// Replaces the content of an existing BTD; uri is set to its URI.
  virtual void updateBTD(const KorWstring& name, const KorWstring& content, KorWstring& uri) = 0;
  /// Whether the BTD name exists.
  virtual bool btdExists(const KorWstring& name) = 0;
  /// Sets content and uri to those of the BTD name.
  virtual void getBTD(const KorWstring& name, KorWstring& content, KorWstring& uri) = 0;
  /// Deletes the BTD name.
  virtual void deleteBTD(const KorWstring& name) = 0;
  /// Appends the URI of every BTD to uris, which is not cleared first.
  virtual void listBTDs(std::vector<KorWstring>& uris) = 0;
  /// The names of every BTD; names is set to them joined by one space.
  virtual std::vector<KorWstring> getBTDNames(KorWstring& names) = 0;
  /// The names of the policies of one type. The in-memory registry appends them to names,
  /// joined by one space and not clearing it first; the Java-backed one sets names to the
  /// text the Java registry answers for the type (for the reserved BTD type, as getBTDNames).
  virtual std::vector<KorWstring> getPolicyNames(const KorWstring& type, KorWstring& names) = 0;
  /// Passes repository details on to the registry.
  virtual void setRepositoryDetails(const KorWstring& text1, const KorWstring& text2, const KorWstring& text3,
                                    bool flag, const KorWstring& text5, const KorWstring& text6,
                                    int value) = 0;
  /// Creates a service.
  virtual void createService(const KorWstring& name, const KorWstring& serviceNamespace,
                             const KorWstring& document) = 0;
  /// Every service, with name and namespace (the documents are empty).
  virtual std::vector<KorISRService> getServices() = 0;
  /// Whether the service name exists; if so, service is set to it.
  virtual bool getService(const KorWstring& name, KorISRService& service) = 0;
  /// Whether the service of that name and namespace exists.
  virtual bool serviceExists(const KorWstring& name, const KorWstring& serviceNamespace) = 0;
  /// Deletes the service name.
  virtual void deleteService(const KorWstring& name) = 0;
  /// Passes a message-flow stop on to the registry.
  virtual void stopMessageFlow(const KorWstring& text1, const KorWstring& text2, const KorWstring& text3,
                               const KorWstring& text4) = 0;

protected:
  /// Registers the object under construction as the process-wide adapter.
  KorISRAdapter() noexcept;

private:
  static KorISRAdapter* iISRAdapter;
};
