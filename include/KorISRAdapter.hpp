#pragma once

#include "KorExport.hpp"
#include "KorISRService.hpp"

#include <KorWstring.hpp>

#include <vector>

// The broker's one way into the integration registry. Failures are raised
// as KorRecoverableException or KorFatalException.
class KOR_EXPORT KorISRAdapter {
public:
  // The process-wide adapter, created on first use: the in-memory registry
  // in a stub container (container kind 1), the Java-backed adapter
  // otherwise. The first call must finish before other threads call.
  static KorISRAdapter* isrAdapter(const KorWstring& name);
  // The same, named after the start parameters.
  static KorISRAdapter* isrAdapter();

  KorISRAdapter(const KorISRAdapter&) = delete;
  KorISRAdapter& operator=(const KorISRAdapter&) = delete;
  // Clears the process-wide adapter, whichever adapter is destroyed.
  virtual ~KorISRAdapter();

  virtual void migratePoliciesFromISR() = 0;
  virtual void createPolicy(const KorWstring& type, const KorWstring& name, const KorWstring& document,
                            KorWstring& uri) = 0;
  virtual void updatePolicy(const KorWstring& type, const KorWstring& name, const KorWstring& document,
                            KorWstring& uri) = 0;
  virtual bool policyExists(const KorWstring& type, const KorWstring& name) = 0;
  virtual void getPolicy(const KorWstring& type, const KorWstring& name, KorWstring& document,
                         KorWstring& uri) = 0;
  virtual void deletePolicy(const KorWstring& type, const KorWstring& name) = 0;
  virtual void createBTD(const KorWstring& name, const KorWstring& content, KorWstring& uri) = 0;
  virtual void updateBTD(const KorWstring& name, const KorWstring& content, KorWstring& uri) = 0;
  virtual bool btdExists(const KorWstring& name) = 0;
  virtual void getBTD(const KorWstring& name, KorWstring& content, KorWstring& uri) = 0;
  virtual void deleteBTD(const KorWstring& name) = 0;
  virtual void listBTDs(std::vector<KorWstring>& uris) = 0;
  virtual std::vector<KorWstring> getBTDNames(KorWstring& names) = 0;
  virtual std::vector<KorWstring> getPolicyNames(const KorWstring& type, KorWstring& names) = 0;
  virtual void setRepositoryDetails(const KorWstring& text1, const KorWstring& text2, const KorWstring& text3,
                                    bool flag, const KorWstring& text5, const KorWstring& text6,
                                    int value) = 0;
  virtual void createService(const KorWstring& name, const KorWstring& serviceNamespace,
                             const KorWstring& document) = 0;
  virtual std::vector<KorISRService> getServices() = 0;
  virtual bool getService(const KorWstring& name, KorISRService& service) = 0;
  virtual bool serviceExists(const KorWstring& name, const KorWstring& serviceNamespace) = 0;
  virtual void deleteService(const KorWstring& name) = 0;
  virtual void stopMessageFlow(const KorWstring& text1, const KorWstring& text2, const KorWstring& text3,
                               const KorWstring& text4) = 0;

protected:
  // Registers the object under construction as the process-wide adapter.
  KorISRAdapter() noexcept;

private:
  static KorISRAdapter* iISRAdapter;
};
