#pragma once

#include "KorExport.hpp"
#include "KorISRAdapter.hpp"

#include <KorWstring.hpp>

#include <map>
#include <vector>

/// The in-memory registry of stub containers: BTDs and policies in ordered
/// maps, kept as long as the object lives; the service and administrative
/// operations answer with nothing. A missing BTD raises DRX2112 (DRX2113 on
/// update); a missing or already present policy DRX2113.
///
/// Threads: it takes no lock. Callers serialise all their calls on it, reads
/// and reset() included; two threads calling at once corrupt its maps.
class KOR_EXPORT KorISRAdapterStub : public KorISRAdapter {
public:
  /// A stored policy.
  struct Policy {
    /// The policy type.
    KorWstring type;
    /// The policy name, unique within its type.
    KorWstring name;
    /// The document, as given.
    KorWstring document;
    /// The URI given out on creation.
    KorWstring uri;
  };

  /// A stored business transaction definition.
  struct BusinessTransactionDefinition {
    /// The BTD name.
    KorWstring name;
    /// The content, as given.
    KorWstring content;
    /// The URI given out on creation.
    KorWstring uri;
  };

  /// Empty stores; becomes the process-wide adapter.
  KorISRAdapterStub() = default;
  /// Frees both stores and clears the process-wide adapter.
  ~KorISRAdapterStub() override;

  /// Empties both stores; the object stays the process-wide adapter.
  void reset();

  void migratePoliciesFromISR() override;
  void createPolicy(const KorWstring& type, const KorWstring& name, const KorWstring& document,
                    KorWstring& uri) override;
  void updatePolicy(const KorWstring& type, const KorWstring& name, const KorWstring& document,
                    KorWstring& uri) override;
  bool policyExists(const KorWstring& type, const KorWstring& name) override;
  void getPolicy(const KorWstring& type, const KorWstring& name, KorWstring& document,
                 KorWstring& uri) override;
  void deletePolicy(const KorWstring& type, const KorWstring& name) override;
  void createBTD(const KorWstring& name, const KorWstring& content, KorWstring& uri) override;
  void updateBTD(const KorWstring& name, const KorWstring& content, KorWstring& uri) override;
  bool btdExists(const KorWstring& name) override;
  void getBTD(const KorWstring& name, KorWstring& content, KorWstring& uri) override;
  void deleteBTD(const KorWstring& name) override;
  void listBTDs(std::vector<KorWstring>& uris) override;
  std::vector<KorWstring> getBTDNames(KorWstring& names) override;
  std::vector<KorWstring> getPolicyNames(const KorWstring& type, KorWstring& names) override;
  void setRepositoryDetails(const KorWstring& text1, const KorWstring& text2, const KorWstring& text3,
                            bool flag, const KorWstring& text5, const KorWstring& text6, int value) override;
  void createService(const KorWstring& name, const KorWstring& serviceNamespace,
                     const KorWstring& document) override;
  std::vector<KorISRService> getServices() override;
  bool getService(const KorWstring& name, KorISRService& service) override;
  bool serviceExists(const KorWstring& name, const KorWstring& serviceNamespace) override;
  void deleteService(const KorWstring& name) override;
  void stopMessageFlow(const KorWstring& text1, const KorWstring& text2, const KorWstring& text3,
                       const KorWstring& text4) override;

private:
  using PoliciesByName = std::map<KorWstring, Policy>;

  std::map<KorWstring, PoliciesByName> policies_;
  std::map<KorWstring, BusinessTransactionDefinition> btds_;
};
