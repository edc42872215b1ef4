#pragma once

#include "KorExport.hpp"
#include "KorISRAdapter.hpp"

#include <KorNamedLogSource.hpp>
#include <KorWstring.hpp>

#include <jni.h>

#include <vector>

// The adapter that forwards every operation to the Java registry's adapter
// singleton through JNI, on the caller's thread. It takes no lock; any
// number of threads may call it at once.
class KOR_EXPORT KorISRAdapterImpl : public KorISRAdapter, public KorNamedLogSource {
public:
  // Obtains the Java adapter singleton; raises when it cannot.
  explicit KorISRAdapterImpl(const KorWstring& name);
  ~KorISRAdapterImpl() override;

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
  KorWstring name_;
  jobject javaAdapter_ = nullptr; // global reference
};
