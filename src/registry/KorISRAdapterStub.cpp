#include "KorISRAdapterStub.hpp"

#include "KorListings.hpp"
#include "KorTextOfLength.hpp"
#include "KorTracedRaise.hpp"

#include <KorException.hpp>
#include <KorLog.hpp>

#include <algorithm>
#include <initializer_list>

namespace {

using PolicyStore = std::map<KorWstring, std::map<KorWstring, KorISRAdapterStub::Policy>>;

const char* const sourceFile = "src/registry/KorISRAdapterStub";

const char* const btdMissingText = "Business transation definition does not exist";
const char* const btdMissingForUpdateText = "The specified business transaction definition does not exist";
const char* const policyPresentText = "The specified policy already exists";
const char* const policyMissingText = "The specified policy does not exist";

const char* const createdText = "Created new business transaction definition";
const char* const updatedText = "Updated existing business transaction definition";

struct Literals {
  KorWstring btdUriPrefix;
  KorWstring policyUriPrefix;
  KorWstring pathSeparator;
};

const Literals& literals() {
  static const Literals texts{KorWstringConvertor::toKorWstring(L"/apiv1/business/businesstransactions/"),
                              KorWstringConvertor::toKorWstring(L"/apiv1/policy/"),
                              KorWstringConvertor::toKorWstring(L"/")};
  return texts;
}

bool tracing() {
  return KorLog::iEffectiveLogFilter > 2;
}

// Inserts: the text twice, then the keys that name the missing or present record.
[[noreturn]] void raiseFailure(int line, const char* function, KorLogToken token, unsigned drx,
                               const char* text, std::initializer_list<KorWstring> keys) {
  KorRecoverableException error(sourceFile, line, function, KorLog::iDefaultLogSource, korMessageNumber(drx),
                                token);
  error << text << text;
  for (const KorWstring& key : keys) {
    error << key;
  }
  korTracedRaise(error);
}

// The parts copied into one text: the shared literals' reference counts, an
// atomic write each, are left alone.
KorWstring joined(std::initializer_list<const KorWstring*> parts) {
  std::size_t length = 0;
  for (const KorWstring* part : parts) {
    length += part->length();
  }
  return korTextOfLength(length, [parts](KorWstring::CodeUnit* out) {
    for (const KorWstring* part : parts) {
      out = std::copy_n(part->data(), part->length(), out);
    }
  });
}

KorWstring btdUri(const KorWstring& name) {
  return joined({&literals().btdUriPrefix, &name});
}

KorWstring policyUri(const KorWstring& type, const KorWstring& name) {
  return joined({&literals().policyUriPrefix, &type, &literals().pathSeparator, &name});
}

KorISRAdapterStub::Policy* findPolicy(PolicyStore& policies, const KorWstring& type, const KorWstring& name) {
  const auto byType = policies.find(type);
  if (byType == policies.end()) {
    return nullptr;
  }
  const auto policy = byType->second.find(name);
  return policy == byType->second.end() ? nullptr : &policy->second;
}

} // namespace

KorISRAdapterStub::~KorISRAdapterStub() = default;

void KorISRAdapterStub::reset() {
  const char* const function = "KorISRAdapter::reset";
  const KorLogToken token = tracing() ? KorLog::entry(function) : 0;
  btds_.clear();
  policies_.clear();
  if (tracing()) {
    KorLog::exit(function, token);
  }
}

void KorISRAdapterStub::createBTD(const KorWstring& name, const KorWstring& content, KorWstring& uri) {
  const char* const function = "KorISRAdapterStub::createBTD";
  const KorLogToken token = tracing() ? KorLog::entry(function, {name, content, uri}) : 0;
  const auto found = btds_.find(name);
  if (found != btds_.end()) {
    found->second.content = content;
    uri = found->second.uri;
    if (tracing()) {
      KorLog::trace(function, token, {updatedText, uri});
    }
  } else {
    // The URI is the caller's first and the record is built from it, so an
    // argument passed twice is stored as it reads after the assignment.
    if (uri.empty()) {
      uri = btdUri(name);
    }
    btds_.emplace(name, BusinessTransactionDefinition{name, content, uri});
    if (tracing()) {
      KorLog::trace(function, token, {createdText, uri});
    }
  }
  if (tracing()) {
    KorLog::exit(function, token);
  }
}

void KorISRAdapterStub::updateBTD(const KorWstring& name, const KorWstring& content, KorWstring& uri) {
  const char* const function = "KorISRAdapterStub::updateBTD";
  const KorLogToken token = tracing() ? KorLog::entry(function, {name, content, uri}) : 0;
  const auto found = btds_.find(name);
  if (found == btds_.end()) {
    raiseFailure(__LINE__, function, token, 2113, btdMissingForUpdateText, {name});
  }
  found->second.content = content;
  uri = found->second.uri;
  if (tracing()) {
    KorLog::trace(function, token, {updatedText, uri});
    KorLog::exit(function, token);
  }
}

bool KorISRAdapterStub::btdExists(const KorWstring& name) {
  const char* const function = "KorISRAdapterStub::btdExists";
  const KorLogToken token = tracing() ? KorLog::entry(function, {name}) : 0;
  const bool exists = btds_.count(name) != 0;
  if (tracing()) {
    KorLog::exit(function, token, {exists});
  }
  return exists;
}

void KorISRAdapterStub::getBTD(const KorWstring& name, KorWstring& content, KorWstring& uri) {
  const char* const function = "KorISRAdapterStub::getBTD";
  const KorLogToken token = tracing() ? KorLog::entry(function, {name, content, uri}) : 0;
  const auto found = btds_.find(name);
  if (found == btds_.end()) {
    raiseFailure(__LINE__, function, token, 2112, btdMissingText, {name});
  }
  content = found->second.content;
  uri = found->second.uri;
  if (tracing()) {
    KorLog::exit(function, token);
  }
}

void KorISRAdapterStub::deleteBTD(const KorWstring& name) {
  const char* const function = "KorISRAdapterStub::deleteBTD";
  const KorLogToken token = tracing() ? KorLog::entry(function, {name}) : 0;
  if (btds_.erase(name) == 0) {
    raiseFailure(__LINE__, function, token, 2112, btdMissingText, {name});
  }
  if (tracing()) {
    KorLog::exit(function, token);
  }
}

void KorISRAdapterStub::listBTDs(std::vector<KorWstring>& uris) {
  const char* const function = "KorISRAdapterStub::listBTDs";
  const KorLogToken token = tracing() ? KorLog::entry(function) : 0;
  korMakeRoom(uris, btds_.size());
  for (const auto& entry : btds_) {
    if (tracing()) {
      KorLog::trace(function, token, {"Adding URI to result", entry.second.uri});
    }
    uris.push_back(entry.second.uri);
  }
  if (tracing()) {
    KorLog::exit(function, token);
  }
}

std::vector<KorWstring> KorISRAdapterStub::getBTDNames(KorWstring& names) {
  const char* const function = "KorISRAdapterStub::getBTDNames";
  const KorLogToken token = tracing() ? KorLog::entry(function) : 0;
  std::vector<KorWstring> result;
  result.reserve(btds_.size());
  names.clear();
  for (const auto& entry : btds_) {
    if (tracing()) {
      KorLog::trace(function, token, {"Adding name to result", entry.first});
    }
    result.push_back(entry.first);
  }
  korAppendJoined(names, result);
  if (tracing()) {
    KorLog::exit(function, token);
  }
  return result;
}

void KorISRAdapterStub::createPolicy(const KorWstring& type, const KorWstring& name,
                                     const KorWstring& document, KorWstring& uri) {
  const char* const function = "KorISRAdapterStub::createPolicy";
  const KorLogToken token = tracing() ? KorLog::entry(function, {type, name, document, uri}) : 0;
  PoliciesByName& byName = policies_[type];
  if (byName.count(name) != 0) {
    raiseFailure(__LINE__, function, token, 2113, policyPresentText, {type, name});
  }
  if (uri.empty()) {
    uri = policyUri(type, name);
  }
  byName.emplace(name, Policy{type, name, document, uri});
  if (tracing()) {
    KorLog::exit(function, token);
  }
}

void KorISRAdapterStub::updatePolicy(const KorWstring& type, const KorWstring& name,
                                     const KorWstring& document, KorWstring& uri) {
  const char* const function = "KorISRAdapterStub::updatePolicy";
  const KorLogToken token = tracing() ? KorLog::entry(function, {type, name, document, uri}) : 0;
  Policy* policy = findPolicy(policies_, type, name);
  if (policy == nullptr) {
    raiseFailure(__LINE__, function, token, 2113, policyMissingText, {type, name});
  }
  policy->document = document;
  uri = policy->uri;
  if (tracing()) {
    KorLog::exit(function, token);
  }
}

bool KorISRAdapterStub::policyExists(const KorWstring& type, const KorWstring& name) {
  const char* const function = "KorISRAdapterStub::policyExists";
  const KorLogToken token = tracing() ? KorLog::entry(function, {type, name}) : 0;
  const bool exists = findPolicy(policies_, type, name) != nullptr;
  if (tracing()) {
    KorLog::exit(function, token, {exists});
  }
  return exists;
}

void KorISRAdapterStub::getPolicy(const KorWstring& type, const KorWstring& name, KorWstring& document,
                                  KorWstring& uri) {
  const char* const function = "KorISRAdapterStub::getPolicy";
  const KorLogToken token = tracing() ? KorLog::entry(function, {type, name}) : 0;
  const Policy* policy = findPolicy(policies_, type, name);
  if (policy == nullptr) {
    raiseFailure(__LINE__, function, token, 2113, policyMissingText, {type, name});
  }
  document = policy->document;
  uri = policy->uri;
  if (tracing()) {
    KorLog::exit(function, token);
  }
}

void KorISRAdapterStub::deletePolicy(const KorWstring& type, const KorWstring& name) {
  const char* const function = "KorISRAdapterStub::deletePolicy";
  const KorLogToken token = tracing() ? KorLog::entry(function, {type, name}) : 0;
  const auto byType = policies_.find(type);
  if (byType == policies_.end() || byType->second.erase(name) == 0) {
    raiseFailure(__LINE__, function, token, 2113, policyMissingText, {type, name});
  }
  if (tracing()) {
    KorLog::exit(function, token);
  }
}

std::vector<KorWstring> KorISRAdapterStub::getPolicyNames(const KorWstring& type, KorWstring& names) {
  const char* const function = "KorISRAdapterStub::getPolicyNames";
  const KorLogToken token = tracing() ? KorLog::entry(function, {type, names}) : 0;
  std::vector<KorWstring> result;
  const auto byType = policies_.find(type);
  if (byType != policies_.end()) {
    result.reserve(byType->second.size());
    for (const auto& entry : byType->second) {
      result.push_back(entry.first);
    }
    korAppendJoined(names, result);
  }
  if (tracing()) {
    KorLog::exit(function, token, {result.size()});
  }
  return result;
}

// The in-memory registry keeps no services, repository details or message
// flows: these operations accept their arguments and do nothing.

void KorISRAdapterStub::migratePoliciesFromISR() {}

void KorISRAdapterStub::setRepositoryDetails(const KorWstring&, const KorWstring&, const KorWstring&, bool,
                                             const KorWstring&, const KorWstring&, int) {}

void KorISRAdapterStub::createService(const KorWstring&, const KorWstring&, const KorWstring&) {}

std::vector<KorISRService> KorISRAdapterStub::getServices() {
  return {};
}

bool KorISRAdapterStub::getService(const KorWstring&, KorISRService&) {
  return false;
}

bool KorISRAdapterStub::serviceExists(const KorWstring&, const KorWstring&) {
  return false;
}

void KorISRAdapterStub::deleteService(const KorWstring&) {}

void KorISRAdapterStub::stopMessageFlow(const KorWstring&, const KorWstring&, const KorWstring&,
                                        const KorWstring&) {}
