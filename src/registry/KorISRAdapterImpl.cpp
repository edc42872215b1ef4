#include "KorISRAdapterImpl.hpp"

#include "KorISRAdapterJniManager.hpp"
#include "KorJniCallScope.hpp"
#include "KorListings.hpp"

#include <KorException.hpp>
#include <KorJVM.hpp>
#include <KorLog.hpp>

#include <utility>

namespace {

using AdapterMethod = jmethodID KorISRAdapterJniManager::ISRAdapterClass::*;

bool plainTrace() {
  return KorLog::iEffectiveLogFilter > 2;
}
bool debugTrace() {
  return KorLog::iEffectiveLogFilter > 3;
}

// Policies of this type are the business transaction definitions.
const KorWstring& reservedPolicyType() {
  static const KorWstring type = KorWstringConvertor::toKorWstring(L"BusinessTransactionDefinition");
  return type;
}

// The inserts are built only once the filter asks for the item: building
// them (copies, number texts) would otherwise cost every call.
template <typename... Inserts> KorLogToken debugEntry(const char* function, const Inserts&... inserts) {
  return debugTrace() ? KorLog::debugEntry(function, {KorLogInsert(inserts)...}) : 0;
}

template <typename... Inserts>
void debugExit(const char* function, KorLogToken token, const Inserts&... inserts) {
  if (debugTrace()) {
    KorLog::debugExit(function, token, {KorLogInsert(inserts)...});
  }
}

// The Java adapter's BTD calls that fill in a document: create, update.
void storeBTD(jobject adapter, const char* function, AdapterMethod store, const char* storeLabel,
              const KorWstring& name, const KorWstring& content, KorWstring& uri) {
  KorLogToken token = debugEntry(function, name, content);
  KorJniCallScope java(function, token);
  const auto& btd = java.manager().btdDocument();
  jstring javaName = java.string(name);
  jstring javaContent = java.string(content);
  jobject document = java.construct("NewObject", btd.cls, btd.init, javaName, javaContent);
  java.call<void>(storeLabel, adapter, java.manager().isrAdapter().*store, document);
  java.requiredText(uri, "method_com_vantor_broker_isr_BTDDocument_getUri", document, btd.getUri);
  debugExit(function, token);
}

// The Java adapter's policy calls that store a validated policy: create, update.
void storePolicy(jobject adapter, const char* function, KorLogToken token, AdapterMethod store,
                 const char* storeLabel, const KorWstring& type, const KorWstring& name,
                 const KorWstring& document, KorWstring& uri) {
  KorJniCallScope java(function, token);
  const auto& policy = java.manager().isrPolicy();
  jstring javaType = java.string(type);
  jstring javaName = java.string(name);
  jstring javaDocument = java.string(document);
  jobject object = java.construct("NewObject", policy.cls, policy.init, javaType, javaName, javaDocument);
  java.call<void>("ISRPolicy_validateContent", object, policy.validateContent);
  java.call<void>(storeLabel, adapter, java.manager().isrAdapter().*store, object);
  java.requiredText(uri, storeLabel, object, policy.getUri);
}

const char* const btdListLabel = "method_com_vantor_broker_isr_ISRAdapter_getBTDs";

// Appends one text of every BTD of a listing to list as it arrives, each a
// text of its own: what arrived before a failure stays with the caller. The
// length is read again before every element.
void listEachBTD(KorJniCallScope& java, const char* function, KorLogToken token, jobject btds,
                 jmethodID KorISRAdapterJniManager::BTDDocumentClass::*read, const char* readLabel,
                 const char* traceText, std::vector<KorWstring>& list) {
  for (jsize i = 0, length = java.length(btds); i < length; ++i, length = java.length(btds)) {
    if (i == 0) {
      korMakeRoom(list, static_cast<std::size_t>(length));
    }
    jobject btd = java.nonNull(readLabel, java.element(btdListLabel, btds, i));
    // Read into the new element itself, which a failure takes back off.
    KorWstring& text = list.emplace_back();
    try {
      java.requiredText(text, readLabel, btd, java.manager().btdDocument().*read);
      if (debugTrace()) {
        KorLog::debugTrace(function, token, {traceText, text});
      }
    } catch (...) {
      list.pop_back();
      throw;
    }
  }
}

// The ISRPolicy that asks about one policy, with an empty document.
jobject policyQuery(KorJniCallScope& java, const KorWstring& type, const KorWstring& name) {
  const auto& policy = java.manager().isrPolicy();
  jstring javaType = java.string(type);
  jstring javaName = java.string(name);
  jstring javaDocument = java.string(KorWstring());
  return java.construct("NewObject", policy.cls, policy.init, javaType, javaName, javaDocument);
}

} // namespace

KorISRAdapterImpl::KorISRAdapterImpl(const KorWstring& name)
    : KorNamedLogSource(L"KorISRAdapterImpl"), name_(name) {
  const char* const function = "KorISRAdapterImpl::KorISRAdapterImpl";
  KorLogToken token = plainTrace() ? KorLog::entry(*this, function) : 0;
  KorJniCallScope java(function, token);
  const auto& adapter = java.manager().isrAdapter();
  jobject instance =
      java.nonNull("ISRAdapter_getInstance",
                   java.callStatic<jobject>("ISRAdapter_getInstance", adapter.cls, adapter.getInstance));
  javaAdapter_ = java.globalRef("NewGlobalRef", instance);
  if (plainTrace()) {
    KorLog::exit(*this, function, token);
  }
}

// A destructor that raised while another exception unwinds would end the
// process, so a failure to release the Java adapter is traced, not raised.
KorISRAdapterImpl::~KorISRAdapterImpl() {
  const char* const function = "KorISRAdapterImpl::~KorISRAdapterImpl";
  KorLogToken token = plainTrace() ? KorLog::entry(function) : 0;
  try {
    KorJniCallScope java(function, token);
    if (javaAdapter_ != nullptr) {
      java.deleteGlobalRef("DeleteGlobalRef", std::exchange(javaAdapter_, nullptr));
    }
  } catch (const KorException& error) {
    // Only the frame failed then; DeleteGlobalRef needs none.
    if (javaAdapter_ != nullptr) {
      KorJVM::getEnvironment()->DeleteGlobalRef(std::exchange(javaAdapter_, nullptr));
    }
    if (plainTrace()) {
      KorLog::trace(function, token, {"Java adapter not released", error.what()});
    }
  }
  if (plainTrace()) {
    KorLog::exit(function, token);
  }
}

bool KorISRAdapterImpl::btdExists(const KorWstring& name) {
  const char* const function = "KorISRAdapterImpl::btdExists";
  KorLogToken token = debugEntry(function, name);
  KorJniCallScope java(function, token);
  bool exists = java.call<bool>("PolicyRespositoryManager_btdExists", javaAdapter_,
                                java.manager().isrAdapter().btdExists, java.string(name));
  debugExit(function, token, exists ? 1 : 0);
  return exists;
}

void KorISRAdapterImpl::createBTD(const KorWstring& name, const KorWstring& content, KorWstring& uri) {
  storeBTD(javaAdapter_, "KorISRAdapterImpl::createBTD", &KorISRAdapterJniManager::ISRAdapterClass::createBTD,
           "method_com_vantor_broker_isr_ISRAdapter_createBTD", name, content, uri);
}

void KorISRAdapterImpl::updateBTD(const KorWstring& name, const KorWstring& content, KorWstring& uri) {
  storeBTD(javaAdapter_, "KorISRAdapterImpl::updateBTD", &KorISRAdapterJniManager::ISRAdapterClass::updateBTD,
           "method_com_vantor_broker_isr_ISRAdapter_updateBTD", name, content, uri);
}

void KorISRAdapterImpl::getBTD(const KorWstring& name, KorWstring& content, KorWstring& uri) {
  const char* const function = "KorISRAdapterImpl::getBTD";
  KorLogToken token = debugEntry(function, name);
  KorJniCallScope java(function, token);
  const auto& btd = java.manager().btdDocument();
  jstring javaName = java.string(name);
  jstring javaContent = java.string(content);
  jobject document = java.construct("NewObject", btd.cls, btd.init, javaName, javaContent);
  java.call<void>("method_com_vantor_broker_isr_ISRAdapter_getBTD", javaAdapter_,
                  java.manager().isrAdapter().getBTD, document);
  java.requiredText(uri, "method_com_vantor_broker_isr_BTDDocument_getUri", document, btd.getUri);
  java.requiredText(content, "method_com_vantor_broker_isr_BTDDocument_getContent", document, btd.getContent);
  debugExit(function, token);
}

void KorISRAdapterImpl::deleteBTD(const KorWstring& name) {
  const char* const function = "KorISRAdapterImpl::deleteBTD";
  KorLogToken token = debugEntry(function, name);
  KorJniCallScope java(function, token);
  java.call<void>("method_com_vantor_broker_isr_ISRAdapter_deleteBTD", javaAdapter_,
                  java.manager().isrAdapter().deleteBTD, java.string(name));
  debugExit(function, token);
}

// A null array is an empty registry. A null element has no URI or name to
// give, which these listings treat as an error (DRX3703 under the label of
// the read), as they do for an element that answers null.
void KorISRAdapterImpl::listBTDs(std::vector<KorWstring>& uris) {
  const char* const function = "KorISRAdapterImpl::listBTDs";
  KorLogToken token = debugEntry(function);
  KorJniCallScope java(function, token);
  const char* const readLabel = "method_com_vantor_broker_isr_BTDDocument_getUri";
  jobject btds = java.call<jobject>(btdListLabel, javaAdapter_, java.manager().isrAdapter().getBTDs);
  listEachBTD(java, function, token, btds, &KorISRAdapterJniManager::BTDDocumentClass::getUri, readLabel,
              "Adding URI to result", uris);
  debugExit(function, token);
}

std::vector<KorWstring> KorISRAdapterImpl::getBTDNames(KorWstring& names) {
  const char* const function = "KorISRAdapterImpl::getBTDNames";
  KorLogToken token = debugEntry(function);
  KorJniCallScope java(function, token);
  const char* const readLabel = "method_com_vantor_broker_isr_BTDDocument_getName";
  jobject btds = java.call<jobject>(btdListLabel, javaAdapter_, java.manager().isrAdapter().getBTDs);
  std::vector<KorWstring> result;
  names.clear();
  // A failed read still leaves the names read before it joined in names.
  try {
    listEachBTD(java, function, token, btds, &KorISRAdapterJniManager::BTDDocumentClass::getName, readLabel,
                "Adding name to result", result);
  } catch (...) {
    korAppendJoined(names, result);
    throw;
  }
  korAppendJoined(names, result);
  debugExit(function, token);
  return result;
}

void KorISRAdapterImpl::createPolicy(const KorWstring& type, const KorWstring& name,
                                     const KorWstring& document, KorWstring& uri) {
  const char* const function = "KorISRAdapterImpl::createPolicy";
  KorLogToken token = debugEntry(function, type, name, document);
  if (type == reservedPolicyType()) {
    createBTD(name, document, uri);
  } else {
    storePolicy(javaAdapter_, function, token, &KorISRAdapterJniManager::ISRAdapterClass::createPolicy,
                "PolicyRespositoryManager_createPolicy", type, name, document, uri);
  }
  debugExit(function, token);
}

void KorISRAdapterImpl::updatePolicy(const KorWstring& type, const KorWstring& name,
                                     const KorWstring& document, KorWstring& uri) {
  const char* const function = "KorISRAdapterImpl::updatePolicy";
  KorLogToken token = debugEntry(function, type, name, document);
  if (type == reservedPolicyType()) {
    updateBTD(name, document, uri);
  } else {
    storePolicy(javaAdapter_, function, token, &KorISRAdapterJniManager::ISRAdapterClass::updatePolicy,
                "PolicyRespositoryManager_updatePolicy", type, name, document, uri);
  }
  debugExit(function, token);
}

void KorISRAdapterImpl::getPolicy(const KorWstring& type, const KorWstring& name, KorWstring& document,
                                  KorWstring& uri) {
  const char* const function = "KorISRAdapterImpl::getPolicy";
  KorLogToken token = debugEntry(function, type, name);
  if (type == reservedPolicyType()) {
    getBTD(name, document, uri);
    debugExit(function, token);
    return;
  }
  KorJniCallScope java(function, token);
  const auto& policy = java.manager().isrPolicy();
  const char* const getLabel = "PolicyRespositoryManager_getPolicy";
  jstring javaType = java.string(type);
  jstring javaName = java.string(name);
  jstring javaDocument = java.string(document);
  jobject query = java.construct("NewObject", policy.cls, policy.init, javaType, javaName, javaDocument);
  java.call<void>(getLabel, javaAdapter_, java.manager().isrAdapter().getPolicy, query);
  java.requiredText(uri, getLabel, query, policy.getUri);
  java.requiredText(document, getLabel, query, policy.getDocument);
  debugExit(function, token);
}

void KorISRAdapterImpl::deletePolicy(const KorWstring& type, const KorWstring& name) {
  const char* const function = "KorISRAdapterImpl::deletePolicy";
  KorLogToken token = debugEntry(function, type, name);
  if (type == reservedPolicyType()) {
    deleteBTD(name);
    debugExit(function, token);
    return;
  }
  KorJniCallScope java(function, token);
  jobject query = policyQuery(java, type, name);
  java.call<void>("PolicyRespositoryManager_deletePolicy", javaAdapter_,
                  java.manager().isrAdapter().deletePolicy, query);
  debugExit(function, token);
}

bool KorISRAdapterImpl::policyExists(const KorWstring& type, const KorWstring& name) {
  const char* const function = "KorISRAdapterImpl::policyExists";
  KorLogToken token = debugEntry(function, type, name);
  if (type == reservedPolicyType()) {
    bool exists = btdExists(name);
    debugExit(function, token, exists);
    return exists;
  }
  KorJniCallScope java(function, token);
  jobject query = policyQuery(java, type, name);
  bool exists = java.call<bool>("PolicyRespositoryManager_policyExists", javaAdapter_,
                                java.manager().isrAdapter().policyExists, query);
  debugExit(function, token, exists ? 1 : 0);
  return exists;
}

// A null array is a type without policies; a null element, which has no name
// to read, is skipped like the empty listing it stands for. After a failure
// the names text is kept and the list is dropped.
std::vector<KorWstring> KorISRAdapterImpl::getPolicyNames(const KorWstring& type, KorWstring& names) {
  const char* const function = "KorISRAdapterImpl::getPolicyNames";
  KorLogToken token = debugEntry(function, type);
  if (type == reservedPolicyType()) {
    std::vector<KorWstring> result = getBTDNames(names);
    debugExit(function, token);
    return result;
  }
  std::vector<KorWstring> result;
  KorJniCallScope java(function, token);
  const auto& adapter = java.manager().isrAdapter();
  const char* const namesLabel = "PolicyRespositoryManager_getPolicyNames";
  const char* const listLabel = "method_com_vantor_broker_isr_ISRAdapter_getPoliciesWithoutDoc";
  jstring javaType = java.string(type);
  java.requiredText(names, namesLabel, javaAdapter_, adapter.getPolicyNames, javaType);
  jobject policies = java.call<jobject>(listLabel, javaAdapter_, adapter.getPoliciesWithoutDoc, javaType);
  jsize count = java.length(policies);
  result.reserve(static_cast<std::size_t>(count));
  for (jsize i = 0; i < count; ++i) {
    jobject policy = java.element(listLabel, policies, i);
    if (policy == nullptr) {
      continue;
    }
    java.optionalText(result.emplace_back(), "method_com_vantor_broker_isr_ISRPolicy_getName", policy,
                      java.manager().isrPolicy().getName);
    if (debugTrace()) {
      KorLog::debugTrace(function, token, {"policyName=", result.back()});
    }
  }
  debugExit(function, token);
  return result;
}

void KorISRAdapterImpl::createService(const KorWstring& name, const KorWstring& serviceNamespace,
                                      const KorWstring& document) {
  const char* const function = "KorISRAdapterImpl::createService";
  KorLogToken token = debugEntry(function, name, serviceNamespace, document);
  KorJniCallScope java(function, token);
  const auto& service = java.manager().isrService();
  jstring javaName = java.string(name);
  jstring javaNamespace = java.string(serviceNamespace);
  jstring javaDocument = java.string(document);
  jobject object = java.construct("NewObject", service.cls, service.initWithDocument, javaName, javaNamespace,
                                  javaDocument);
  java.call<void>("method_com_vantor_broker_isr_ISRAdapter_createService", javaAdapter_,
                  java.manager().isrAdapter().createService, object);
  debugExit(function, token);
}

bool KorISRAdapterImpl::serviceExists(const KorWstring& name, const KorWstring& serviceNamespace) {
  const char* const function = "KorISRAdapterImpl::serviceExists";
  KorLogToken token = debugEntry(function, name, serviceNamespace);
  KorJniCallScope java(function, token);
  const auto& service = java.manager().isrService();
  jstring javaName = java.string(name);
  jstring javaNamespace = java.string(serviceNamespace);
  jobject query = java.construct("NewObject", service.cls, service.init, javaName, javaNamespace);
  bool exists = java.call<bool>("method_com_vantor_broker_isr_ISRAdapter_serviceExists", javaAdapter_,
                                java.manager().isrAdapter().serviceExists, query);
  debugExit(function, token, exists);
  return exists;
}

bool KorISRAdapterImpl::getService(const KorWstring& name, KorISRService& service) {
  const char* const function = "KorISRAdapterImpl::getService";
  KorLogToken token = debugEntry(function, name);
  KorJniCallScope java(function, token);
  const auto& javaService = java.manager().isrService();
  jobject found = java.call<jobject>("method_com_vantor_broker_isr_ISRAdapter_getService", javaAdapter_,
                                     java.manager().isrAdapter().getService, java.string(name));
  if (found == nullptr) {
    debugExit(function, token, "false");
    return false;
  }
  if (debugTrace()) {
    KorLog::debugTrace(function, token, {"got service"});
  }
  // The record changes only once all three texts have arrived.
  KorWstring serviceName =
      java.optionalText("method_com_vantor_broker_isr_ISRService_getName", found, javaService.getName);
  if (debugTrace()) {
    KorLog::debugTrace(function, token, {"serviceName=", serviceName});
  }
  KorWstring serviceNamespace = java.optionalText("method_com_vantor_broker_isr_ISRSerivce_getNamespace",
                                                  found, javaService.getNamespace);
  if (debugTrace()) {
    KorLog::debugTrace(function, token, {"serviceNamespace=", serviceNamespace});
  }
  KorWstring document = java.optionalText("method_com_vantor_broker_isr_ISRService_getDocument", found,
                                          javaService.getDocument);
  if (debugTrace()) {
    KorLog::debugTrace(function, token, {"serviceContent=", document});
  }
  service.name = std::move(serviceName);
  service.serviceNamespace = std::move(serviceNamespace);
  service.document = std::move(document);
  debugExit(function, token, "true");
  return true;
}

void KorISRAdapterImpl::deleteService(const KorWstring& name) {
  const char* const function = "KorISRAdapterImpl::deleteService";
  KorLogToken token = debugEntry(function, name);
  KorJniCallScope java(function, token);
  java.call<void>("method_com_vantor_broker_isr_ISRAdapter_deleteService", javaAdapter_,
                  java.manager().isrAdapter().deleteService, java.string(name));
  debugExit(function, token);
}

// A null array is a registry without services; a null element is skipped,
// as this listing already reads a missing name as empty.
std::vector<KorISRService> KorISRAdapterImpl::getServices() {
  const char* const function = "KorISRAdapterImpl::getServices";
  KorLogToken token = debugEntry(function);
  std::vector<KorISRService> result;
  KorJniCallScope java(function, token);
  const auto& javaService = java.manager().isrService();
  const char* const listLabel = "method_com_vantor_broker_isr_ISRAdapter_getServicesWithoutDoc";
  jobject services =
      java.call<jobject>(listLabel, javaAdapter_, java.manager().isrAdapter().getServicesWithoutDoc);
  jsize count = java.length(services);
  result.reserve(static_cast<std::size_t>(count));
  for (jsize i = 0; i < count; ++i) {
    jobject service = java.element(listLabel, services, i);
    if (service == nullptr) {
      continue;
    }
    KorISRService& record = result.emplace_back();
    java.optionalText(record.name, "method_com_vantor_broker_isr_ISRService_getName", service,
                      javaService.getName);
    if (debugTrace()) {
      KorLog::debugTrace(function, token, {"serviceName=", record.name});
    }
    java.optionalText(record.serviceNamespace, "method_com_vantor_broker_isr_ISRSerivce_getNamespace",
                      service, javaService.getNamespace);
    if (debugTrace()) {
      KorLog::debugTrace(function, token, {"serviceNamespace=", record.serviceNamespace});
    }
  }
  debugExit(function, token);
  return result;
}

void KorISRAdapterImpl::setRepositoryDetails(const KorWstring& text1, const KorWstring& text2,
                                             const KorWstring& text3, bool flag, const KorWstring& text5,
                                             const KorWstring& text6, int value) {
  const char* const function = "KorISRAdapterImpl::setRepositoryDetails";
  KorLogToken token = debugEntry(function, text1, text2, text3, text5, text6);
  KorJniCallScope java(function, token);
  jstring java1 = java.string(text1);
  jstring java2 = java.string(text2);
  jstring java3 = java.string(text3);
  jstring java5 = java.string(text5);
  jstring java6 = java.string(text6);
  java.call<void>("ISRAdapter_setRepositoryDetails", javaAdapter_,
                  java.manager().isrAdapter().setRepositoryDetails, java1, java2, java3,
                  static_cast<jboolean>(flag ? JNI_TRUE : JNI_FALSE), java5, java6, static_cast<jint>(value));
  debugExit(function, token);
}

void KorISRAdapterImpl::migratePoliciesFromISR() {
  const char* const function = "KorISRAdapterImpl::migratePoliciesFromISR";
  KorLogToken token = debugEntry(function);
  KorJniCallScope java(function, token);
  const auto& migration = java.manager().isrMigration();
  const char* const instanceLabel = "ISRMigration_getInstance";
  jobject migrator = java.nonNull(
      instanceLabel, java.callStatic<jobject>(instanceLabel, migration.cls, migration.getInstance));
  // The Java side reports a failed migration through an exception; its
  // result says nothing more.
  java.call<bool>("method_com_vantor_broker_isr_migration_ISRMigration_migrateISR", migrator,
                  migration.migrateISR);
  debugExit(function, token);
}

void KorISRAdapterImpl::stopMessageFlow(const KorWstring& text1, const KorWstring& text2,
                                        const KorWstring& text3, const KorWstring& text4) {
  const char* const function = "KorISRAdapterImpl::stopMessageFlow";
  KorLogToken token = debugEntry(function, text1, text2, text3, text4);
  KorJniCallScope java(function, token);
  const auto& proxy = java.manager().messageFlowProxy();
  jstring java1 = java.string(text1);
  jstring java2 = java.string(text2);
  jstring java3 = java.string(text3);
  jstring java4 = java.string(text4);
  java.callStatic<void>("MessageFlowProxy_stopMessageFlow", proxy.cls, proxy.stopMessageFlow, java1, java2,
                        java3, java4);
  debugExit(function, token);
}
