#pragma once

#include "KorExport.hpp"

#include <KorJniManager.hpp>
#include <KorWstring.hpp>

#include <jni.h>

#include <vector>

// The process-wide table of the Java classes and methods the library calls,
// resolved once, and the translation of the Java registry's exceptions. Read
// only after creation; a row that could not be resolved stays null.
class KOR_EXPORT KorISRAdapterJniManager : public KorJniManager {
public:
  struct ISRAdapterClass {
    jclass cls;
    jmethodID getInstance, createPolicy, setRepositoryDetails, policyExists, getPolicy, getPoliciesWithoutDoc,
        deletePolicy, updatePolicy, getPolicyNames, createService, getServicesWithoutDoc, getService,
        deleteService, serviceExists, createBTD, updateBTD, deleteBTD, getBTD, getBTDs, btdExists;
  };
  struct ISRPolicyClass {
    jclass cls;
    jmethodID init, getName, getUri, getDocument, validateContent;
  };
  struct BTDDocumentClass {
    jclass cls;
    jmethodID init, getName, getUri, getContent;
  };
  struct ISRServiceClass {
    jclass cls;
    jmethodID initWithDocument, init, getUri, getDocument, getName, getNamespace;
  };
  struct LxExceptionClass {
    jclass cls;
    jmethodID getFileName, getLineNumber, getMethodName, getNativeMessageNumber, getTraceText, getInserts,
        getNestedExceptions, getNativeExceptionHandle, toLogString, isInternal, getMessageSource,
        getMessageKey, getClassName;
  };
  struct LxRecoverableExceptionClass {
    jclass cls;
  };
  struct ObjectClass {
    jclass cls;
    jmethodID toString;
  };
  struct MessageFlowProxyClass {
    jclass cls;
    jmethodID stopMessageFlow;
  };
  struct ISRMigrationClass {
    jclass cls;
    jmethodID getInstance, migrateISR;
  };

  // The singleton, created on first use under a lock. Raises only when the
  // manager itself cannot be built; unresolved rows are not an error here.
  static KorISRAdapterJniManager* instance();

  ~KorISRAdapterJniManager() override;

  bool processKnownException(JNIEnv* env, jobject exception, int& messageNumber, KorWstring& text,
                             std::vector<KorWstring>& inserts, bool& nested) const override;
  bool checkForKnownExceptions(JNIEnv* env, jthrowable throwable, KorJniReturn& outcome) const override;

  const ISRAdapterClass& isrAdapter() const noexcept { return isrAdapter_; }
  const ISRPolicyClass& isrPolicy() const noexcept { return isrPolicy_; }
  const BTDDocumentClass& btdDocument() const noexcept { return btdDocument_; }
  const ISRServiceClass& isrService() const noexcept { return isrService_; }
  const LxExceptionClass& lxException() const noexcept { return lxException_; }
  const LxRecoverableExceptionClass& lxRecoverableException() const noexcept {
    return lxRecoverableException_;
  }
  const ObjectClass& object() const noexcept { return object_; }
  const MessageFlowProxyClass& messageFlowProxy() const noexcept { return messageFlowProxy_; }
  const ISRMigrationClass& isrMigration() const noexcept { return isrMigration_; }

private:
  KorISRAdapterJniManager();
  void initialise();

  ISRAdapterClass isrAdapter_{};
  ISRPolicyClass isrPolicy_{};
  BTDDocumentClass btdDocument_{};
  ISRServiceClass isrService_{};
  LxExceptionClass lxException_{};
  LxRecoverableExceptionClass lxRecoverableException_{};
  ObjectClass object_{};
  MessageFlowProxyClass messageFlowProxy_{};
  ISRMigrationClass isrMigration_{};
};
