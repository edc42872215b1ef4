#pragma once

#include "KorExport.hpp"
#include "KorISRService.hpp"

#include <KorWstring.hpp>

#include <vector>

/// The broker's one way into the integration registry: policies, business
/// transaction definitions (BTDs), services and administrative requests.
///
/// Failures are raised as KorRecoverableException or KorFatalException; the
/// message numbers below are 0xC0000000 plus the DRX number. Where each
/// operation says "Java failures", the Java-backed adapter raises, with the
/// label of the Java call that failed:
/// - KorRecoverableException with the Java side's own number, text and
///   inserts, when the registry raised a known (LxRecoverableException)
///   exception (DRX4374 when one of its inserts could not be read);
/// - KorRecoverableException DRX3701 "Error Making JNI Call: LABEL" when
///   it raised any other Java exception;
/// - KorFatalException DRX3702 "Fatal Error Making JNI Call: LABEL" on a
///   fatal Java error or a Java class or method that could not be resolved;
/// - KorRecoverableException DRX3703 "Unexpected NULL returned from JNI
///   Call in: LABEL" where an operation says so, when a Java call returned
///   null where an object is required.
///
/// Which Java exception reports a missing or existing record is the Java
/// registry's choice (the bundled one raises 5101 to 5107); the in-memory
/// registry (KorISRAdapterStub) raises DRX2112 and DRX2113 and leaves every
/// out-parameter as it was when it raises. The host's guide tabulates where
/// the two registries differ.
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
  /// call.
  /// @throws KorFatalException DRX3702 "Fatal Error Making JNI Call:
  ///   JNI_GetCreatedJavaVMs" when the process has no JVM or no libjvm loads,
  ///   or with the label of the Java class or method that could not be
  ///   resolved; the instance stays null and the next call tries again.
  /// @throws KorRecoverableException DRX3703 "Unexpected NULL returned from
  ///   JNI Call in: ISRAdapter_getInstance" when the Java registry gives no
  ///   adapter; Java failures of getInstance as the class says.
  static KorISRAdapter* isrAdapter(const KorWstring& name);
  /// The same, named after the start parameters.
  /// @throws KorFatalException, KorRecoverableException as isrAdapter(name).
  static KorISRAdapter* isrAdapter();

  /// Not copyable.
  KorISRAdapter(const KorISRAdapter&) = delete;
  /// Not assignable.
  KorISRAdapter& operator=(const KorISRAdapter&) = delete;
  /// Clears the process-wide adapter, whichever adapter is destroyed; the
  /// next isrAdapter() call creates a new one.
  virtual ~KorISRAdapter();

  /// Asks the registry to migrate its policies; in memory, does nothing.
  /// @throws KorRecoverableException DRX3703 "Unexpected NULL returned from
  ///   JNI Call in: ISRMigration_getInstance" when the Java registry has no
  ///   migration object; Java failures (labels ISRMigration_getInstance,
  ///   method_com_vantor_broker_isr_migration_ISRMigration_migrateISR).
  virtual void migratePoliciesFromISR() = 0;
  /// Creates the policy name of the given type with document; uri is set to
  /// the policy's URI, and only on success. In memory a non-empty uri is
  /// kept as the URI, an empty one becomes "/apiv1/policy/TYPE/NAME"; the
  /// Java registry gives its own and never sees uri. Java-backed, the type
  /// "BusinessTransactionDefinition" is createBTD(name, document, uri).
  /// @throws KorRecoverableException DRX2113 "The specified policy already
  ///   exists" in memory, when it exists.
  /// @throws KorRecoverableException DRX3703 (labels NewObject,
  ///   PolicyRespositoryManager_createPolicy: the stored policy has no URI,
  ///   and stays stored); Java failures, also of ISRPolicy_validateContent,
  ///   which rejects the document before the registry is called.
  virtual void createPolicy(const KorWstring& type, const KorWstring& name, const KorWstring& document,
                            KorWstring& uri) = 0;
  /// Replaces the document of an existing policy; uri is set to its URI,
  /// and only on success. Java-backed, the type
  /// "BusinessTransactionDefinition" is updateBTD(name, document, uri).
  /// @throws KorRecoverableException DRX2113 "The specified policy does not
  ///   exist" in memory, when it does not exist.
  /// @throws KorRecoverableException DRX3703 (labels NewObject,
  ///   PolicyRespositoryManager_updatePolicy); Java failures, also of
  ///   ISRPolicy_validateContent.
  virtual void updatePolicy(const KorWstring& type, const KorWstring& name, const KorWstring& document,
                            KorWstring& uri) = 0;
  /// Whether the policy name of the given type exists. Java-backed, the type
  /// "BusinessTransactionDefinition" is btdExists(name).
  /// @throws KorRecoverableException DRX3703 (label NewObject); Java failures
  ///   (label PolicyRespositoryManager_policyExists). In memory, nothing.
  virtual bool policyExists(const KorWstring& type, const KorWstring& name) = 0;
  /// Sets document and uri to those of the policy name of the given type.
  /// Java-backed, the type "BusinessTransactionDefinition" is getBTD.
  /// @throws KorRecoverableException DRX2113 "The specified policy does not
  ///   exist" in memory; both out-parameters stay as they were.
  /// @throws KorRecoverableException DRX3703 (labels NewObject,
  ///   PolicyRespositoryManager_getPolicy); Java failures. uri is set before
  ///   the document is read: a failure reading the document leaves uri
  ///   changed and document as it was; any earlier failure leaves both.
  virtual void getPolicy(const KorWstring& type, const KorWstring& name, KorWstring& document,
                         KorWstring& uri) = 0;
  /// Deletes the policy name of the given type. Java-backed, the type
  /// "BusinessTransactionDefinition" is deleteBTD(name).
  /// @throws KorRecoverableException DRX2113 "The specified policy does not
  ///   exist" in memory.
  /// @throws KorRecoverableException DRX3703 (label NewObject); Java failures
  ///   (label PolicyRespositoryManager_deletePolicy).
  virtual void deletePolicy(const KorWstring& type, const KorWstring& name) = 0;
  /// Creates the BTD name with content; uri is set to the BTD's URI, and
  /// only on success. In memory an existing BTD is replaced (its content,
  /// keeping its URI) and a non-empty uri is kept as a new BTD's URI, an
  /// empty one becomes "/apiv1/business/businesstransactions/NAME"; the Java
  /// registry decides about an existing BTD (the bundled one refuses with
  /// 5102), gives its own URI and never sees uri.
  /// @throws KorRecoverableException DRX3703 (labels NewObject,
  ///   method_com_vantor_broker_isr_BTDDocument_getUri); Java failures (label
  ///   method_com_vantor_broker_isr_ISRAdapter_createBTD). In memory,
  ///   nothing but std::bad_alloc.
  virtual void createBTD(const KorWstring& name, const KorWstring& content, KorWstring& uri) = 0;
  /// Replaces the content of an existing BTD; uri is set to its URI, and
  /// only on success.
  /// @throws KorRecoverableException DRX2113 "The specified business
  ///   transaction definition does not exist" in memory.
  /// @throws KorRecoverableException DRX3703 (labels NewObject,
  ///   method_com_vantor_broker_isr_BTDDocument_getUri); Java failures (label
  ///   method_com_vantor_broker_isr_ISRAdapter_updateBTD).
  virtual void updateBTD(const KorWstring& name, const KorWstring& content, KorWstring& uri) = 0;
  /// Whether the BTD name exists.
  /// @throws KorRecoverableException, KorFatalException Java failures (label
  ///   PolicyRespositoryManager_btdExists). In memory, nothing.
  virtual bool btdExists(const KorWstring& name) = 0;
  /// Sets content and uri to those of the BTD name.
  /// @throws KorRecoverableException DRX2112 "Business transation definition
  ///   does not exist" in memory; both out-parameters stay as they were.
  /// @throws KorRecoverableException DRX3703 (labels NewObject,
  ///   method_com_vantor_broker_isr_BTDDocument_getUri,
  ///   method_com_vantor_broker_isr_BTDDocument_getContent); Java failures
  ///   (label method_com_vantor_broker_isr_ISRAdapter_getBTD). uri is set
  ///   before the content is read: a failure reading the content leaves uri
  ///   changed and content as it was; any earlier failure leaves both.
  virtual void getBTD(const KorWstring& name, KorWstring& content, KorWstring& uri) = 0;
  /// Deletes the BTD name.
  /// @throws KorRecoverableException DRX2112 "Business transation definition
  ///   does not exist" in memory.
  /// @throws KorRecoverableException, KorFatalException Java failures (label
  ///   method_com_vantor_broker_isr_ISRAdapter_deleteBTD); never DRX3703.
  virtual void deleteBTD(const KorWstring& name) = 0;
  /// Appends the URI of every BTD to uris, which is not cleared first.
  /// @throws KorRecoverableException DRX3703 (label
  ///   method_com_vantor_broker_isr_BTDDocument_getUri); Java failures (label
  ///   method_com_vantor_broker_isr_ISRAdapter_getBTDs). Nothing is taken
  ///   back: the URIs appended before the failure stay. In memory, nothing
  ///   but std::bad_alloc.
  virtual void listBTDs(std::vector<KorWstring>& uris) = 0;
  /// The names of every BTD; names is set to them joined by one space.
  /// @throws KorRecoverableException DRX3703 (label
  ///   method_com_vantor_broker_isr_BTDDocument_getName); Java failures (label
  ///   method_com_vantor_broker_isr_ISRAdapter_getBTDs). A failure of the
  ///   listing leaves names as it was; a failure at the k-th name leaves
  ///   names holding the k names before it. In memory, nothing but
  ///   std::bad_alloc.
  virtual std::vector<KorWstring> getBTDNames(KorWstring& names) = 0;
  /// The names of the policies of one type. In memory the names are
  /// appended to names (after one space when it is not empty); Java-backed,
  /// names is replaced by the text the Java registry gives, and the type
  /// "BusinessTransactionDefinition" is getBTDNames(names).
  /// @throws KorRecoverableException DRX3703 (label
  ///   PolicyRespositoryManager_getPolicyNames, before names is changed);
  ///   Java failures (labels
  ///   method_com_vantor_broker_isr_ISRAdapter_getPoliciesWithoutDoc,
  ///   method_com_vantor_broker_isr_ISRPolicy_getName), which leave names
  ///   already replaced. In memory, nothing but std::bad_alloc.
  virtual std::vector<KorWstring> getPolicyNames(const KorWstring& type, KorWstring& names) = 0;
  /// Passes repository details on to the registry; in memory, ignores them.
  /// @throws KorRecoverableException, KorFatalException Java failures (label
  ///   ISRAdapter_setRepositoryDetails).
  virtual void setRepositoryDetails(const KorWstring& text1, const KorWstring& text2, const KorWstring& text3,
                                    bool flag, const KorWstring& text5, const KorWstring& text6,
                                    int value) = 0;
  /// Creates a service; in memory, stores nothing.
  /// @throws KorRecoverableException DRX3703 (label NewObject: the registry
  ///   is not called); Java failures (label
  ///   method_com_vantor_broker_isr_ISRAdapter_createService).
  virtual void createService(const KorWstring& name, const KorWstring& serviceNamespace,
                             const KorWstring& document) = 0;
  /// Every service, with name and namespace (the documents are empty); in
  /// memory, none.
  /// @throws KorRecoverableException, KorFatalException Java failures (label
  ///   method_com_vantor_broker_isr_ISRAdapter_getServicesWithoutDoc, or of
  ///   reading a service's fields).
  virtual std::vector<KorISRService> getServices() = 0;
  /// Whether the service name exists; if so, service is set to it, and
  /// otherwise left as it was. In memory, always false.
  /// @throws KorRecoverableException, KorFatalException Java failures (label
  ///   method_com_vantor_broker_isr_ISRAdapter_getService, or of reading the
  ///   service's fields, such as
  ///   method_com_vantor_broker_isr_ISRService_getDocument); service stays
  ///   as it was.
  virtual bool getService(const KorWstring& name, KorISRService& service) = 0;
  /// Whether the service of that name and namespace exists; in memory,
  /// always false, also right after createService.
  /// @throws KorRecoverableException, KorFatalException Java failures (label
  ///   method_com_vantor_broker_isr_ISRAdapter_serviceExists).
  virtual bool serviceExists(const KorWstring& name, const KorWstring& serviceNamespace) = 0;
  /// Deletes the service name; in memory, does nothing for any name.
  /// @throws KorRecoverableException, KorFatalException Java failures (label
  ///   method_com_vantor_broker_isr_ISRAdapter_deleteService).
  virtual void deleteService(const KorWstring& name) = 0;
  /// Passes a message-flow stop on to the registry; in memory, ignores it.
  /// @throws KorRecoverableException, KorFatalException Java failures (label
  ///   MessageFlowProxy_stopMessageFlow).
  virtual void stopMessageFlow(const KorWstring& text1, const KorWstring& text2, const KorWstring& text3,
                               const KorWstring& text4) = 0;

protected:
  /// Registers the object under construction as the process-wide adapter.
  KorISRAdapter() noexcept;

private:
  static KorISRAdapter* iISRAdapter;
};
