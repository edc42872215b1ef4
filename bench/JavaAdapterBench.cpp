// The Java-backed adapter's operations, each beside its floor: a hand-written
// function making the same JNI calls in the same order on the same texts,
// with ExceptionCheck after every call that can raise, and nothing else. The
// floor reads texts into scratch storage; the owned floor returns owned
// standard strings as a careful hand-written function would. Listings and
// service reads are bound to the owned floor; the others to the floor, the
// owned floor showing what handing out the caller's own texts costs.
#include "BenchSupport.hpp"
#include "PairBench.hpp"

#include <KorJVM.hpp>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using namespace bench;

// The floor's own classes and method IDs, resolved once like the library's.
struct FloorJni {
  jobject adapter;
  jclass btd, policy;
  jmethodID btdInit, btdGetName, btdGetUri, btdGetContent;
  jmethodID policyInit, policyGetName, policyGetUri, policyGetDocument, policyValidate;
  jmethodID serviceGetName, serviceGetNamespace, serviceGetDocument;
  jmethodID btdExists, createBTD, deleteBTD, getBTD, getBTDs;
  jmethodID createPolicy, deletePolicy, getPolicy, policyExists, getPolicyNames, getPoliciesWithoutDoc;
  jmethodID getService, getServicesWithoutDoc;
};

[[noreturn]] void javaFailed(JNIEnv* env) {
  env->ExceptionDescribe();
  std::abort();
}

void check(JNIEnv* env) {
  if (env->ExceptionCheck()) {
    javaFailed(env);
  }
}

template <typename T> T checked(JNIEnv* env, T value) {
  check(env);
  return value;
}

FloorJni resolveFloorJni() {
  JNIEnv* env = KorJVM::getEnvironment();
  auto globalClass = [env](const char* name) {
    return static_cast<jclass>(env->NewGlobalRef(checked(env, env->FindClass(name))));
  };
  const jclass adapter = globalClass("com/vantor/broker/isr/ISRAdapter");
  const jclass service = globalClass("com/vantor/broker/isr/ISRService");
  FloorJni j{};
  j.btd = globalClass("com/vantor/broker/isr/BTDDocument");
  j.policy = globalClass("com/vantor/broker/isr/ISRPolicy");
  const char* const text = "()Ljava/lang/String;";
  const char* const takesPolicy = "(Lcom/vantor/broker/isr/ISRPolicy;)V";
  const char* const takesBtd = "(Lcom/vantor/broker/isr/BTDDocument;)V";
  struct Row {
    jmethodID* slot;
    jclass cls;
    const char* name;
    const char* signature;
  };
  const Row rows[] = {
      {&j.btdInit, j.btd, "<init>", "(Ljava/lang/String;Ljava/lang/String;)V"},
      {&j.btdGetName, j.btd, "getName", text},
      {&j.btdGetUri, j.btd, "getUri", text},
      {&j.btdGetContent, j.btd, "getContent", text},
      {&j.policyInit, j.policy, "<init>", "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;)V"},
      {&j.policyGetName, j.policy, "getName", text},
      {&j.policyGetUri, j.policy, "getUri", text},
      {&j.policyGetDocument, j.policy, "getDocument", text},
      {&j.policyValidate, j.policy, "validateContent", "()V"},
      {&j.serviceGetName, service, "getName", text},
      {&j.serviceGetNamespace, service, "getNamespace", text},
      {&j.serviceGetDocument, service, "getDocument", text},
      {&j.btdExists, adapter, "btdExists", "(Ljava/lang/String;)Z"},
      {&j.createBTD, adapter, "createBTD", takesBtd},
      {&j.deleteBTD, adapter, "deleteBTD", "(Ljava/lang/String;)V"},
      {&j.getBTD, adapter, "getBTD", takesBtd},
      {&j.getBTDs, adapter, "getBTDs", "()[Lcom/vantor/broker/isr/BTDDocument;"},
      {&j.createPolicy, adapter, "createPolicy", takesPolicy},
      {&j.deletePolicy, adapter, "deletePolicy", takesPolicy},
      {&j.getPolicy, adapter, "getPolicy", takesPolicy},
      {&j.policyExists, adapter, "policyExists", "(Lcom/vantor/broker/isr/ISRPolicy;)Z"},
      {&j.getPolicyNames, adapter, "getPolicyNames", "(Ljava/lang/String;)Ljava/lang/String;"},
      {&j.getPoliciesWithoutDoc, adapter, "getPoliciesWithoutDoc",
       "(Ljava/lang/String;)[Lcom/vantor/broker/isr/ISRPolicy;"},
      {&j.getService, adapter, "getService", "(Ljava/lang/String;)Lcom/vantor/broker/isr/ISRService;"},
      {&j.getServicesWithoutDoc, adapter, "getServicesWithoutDoc", "()[Lcom/vantor/broker/isr/ISRService;"},
  };
  for (const Row& row : rows) {
    *row.slot = checked(env, env->GetMethodID(row.cls, row.name, row.signature));
  }
  const jmethodID getInstance =
      checked(env, env->GetStaticMethodID(adapter, "getInstance", "()Lcom/vantor/broker/isr/ISRAdapter;"));
  j.adapter = env->NewGlobalRef(checked(env, env->CallStaticObjectMethod(adapter, getInstance)));
  return j;
}

const FloorJni& floorJni() {
  static const FloorJni jni = resolveFloorJni();
  return jni;
}

class Frame {
public:
  explicit Frame(JNIEnv* env) : env_(env) {
    if (env->PushLocalFrame(10) < 0) {
      javaFailed(env);
    }
  }
  ~Frame() { env_->PopLocalFrame(nullptr); }
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

private:
  JNIEnv* env_;
};

jstring string(JNIEnv* env, const KorWstring& text) {
  return checked(
      env, env->NewString(reinterpret_cast<const jchar*>(text.data()), static_cast<jsize>(text.length())));
}

// The JNI half of a conversion: the units land in scratch storage.
void read(JNIEnv* env, jobject text) {
  thread_local jchar units[1 << 12];
  const auto javaText = static_cast<jstring>(text);
  const jsize length = env->GetStringLength(javaText);
  env->GetStringRegion(javaText, 0, std::min<jsize>(length, std::size(units)), units);
  check(env);
}

std::u16string owned(JNIEnv* env, jobject text) {
  const auto javaText = static_cast<jstring>(text);
  std::u16string units(static_cast<std::size_t>(env->GetStringLength(javaText)), u'\0');
  env->GetStringRegion(javaText, 0, static_cast<jsize>(units.size()), reinterpret_cast<jchar*>(units.data()));
  check(env);
  return units;
}

// Sized exactly before the one allocation.
std::u16string joined(const std::vector<std::u16string>& names) {
  std::size_t length = names.empty() ? 0 : names.size() - 1;
  for (const std::u16string& name : names) {
    length += name.size();
  }
  std::u16string text;
  text.reserve(length);
  for (const std::u16string& name : names) {
    if (!text.empty()) {
      text += u' ';
    }
    text += name;
  }
  return text;
}

struct Inputs {
  KorWstring btd = numbered("btd", 0);
  KorWstring pair = text("pair");
  KorWstring content = document(documentLength);
  KorWstring type = text("Security");
  KorWstring policy = numbered("policy", 0);
  KorWstring empty;
  KorWstring service = numbered("service", 0);
};

// Reused across iterations, as a caller would; content goes in as the
// stored document, which getBTD and getPolicy send and get back.
struct Outputs {
  KorWstring uri;
  KorWstring content = document(documentLength);
  KorWstring names;
  std::vector<KorWstring> list;
  KorISRService service;
};

// The owned floor's reused outputs: the vector that listBTDs appends to, and
// the strings a result replaces.
struct OwnedOutputs {
  std::vector<std::u16string> list;
  std::u16string uri, content;
};

// A result text, into scratch storage or into the caller's own string.
template <bool Owned> void resultText(JNIEnv* env, jobject text, std::u16string& into) {
  if constexpr (Owned) {
    into = owned(env, text);
  } else {
    read(env, text);
  }
}

using Adapter = KorISRAdapterImpl;
using Floor = const FloorJni;

void floorBtdExists(JNIEnv* env, Floor& j, const Inputs& in, OwnedOutputs&) {
  Frame frame(env);
  jstring name = string(env, in.btd);
  benchmark::DoNotOptimize(checked(env, env->CallBooleanMethod(j.adapter, j.btdExists, name)));
}

template <bool Owned> void floorGetBtd(JNIEnv* env, Floor& j, const Inputs& in, OwnedOutputs& out) {
  Frame frame(env);
  jstring name = string(env, in.btd);
  jstring content = string(env, in.content);
  jobject btd = checked(env, env->NewObject(j.btd, j.btdInit, name, content));
  env->CallVoidMethod(j.adapter, j.getBTD, btd);
  check(env);
  resultText<Owned>(env, checked(env, env->CallObjectMethod(btd, j.btdGetUri)), out.uri);
  resultText<Owned>(env, checked(env, env->CallObjectMethod(btd, j.btdGetContent)), out.content);
}

template <bool Owned> void floorCreateDeleteBtd(JNIEnv* env, Floor& j, const Inputs& in, OwnedOutputs& out) {
  {
    Frame frame(env);
    jstring name = string(env, in.pair);
    jstring content = string(env, in.content);
    jobject btd = checked(env, env->NewObject(j.btd, j.btdInit, name, content));
    env->CallVoidMethod(j.adapter, j.createBTD, btd);
    check(env);
    resultText<Owned>(env, checked(env, env->CallObjectMethod(btd, j.btdGetUri)), out.uri);
  }
  Frame frame(env);
  jstring name = string(env, in.pair);
  env->CallVoidMethod(j.adapter, j.deleteBTD, name);
  check(env);
}

jobject floorPolicy(JNIEnv* env, Floor& j, const KorWstring& type, const KorWstring& name,
                    const KorWstring& document) {
  jstring javaType = string(env, type);
  jstring javaName = string(env, name);
  jstring javaDocument = string(env, document);
  return checked(env, env->NewObject(j.policy, j.policyInit, javaType, javaName, javaDocument));
}

template <bool Owned>
void floorCreateDeletePolicy(JNIEnv* env, Floor& j, const Inputs& in, OwnedOutputs& out) {
  {
    Frame frame(env);
    jobject policy = floorPolicy(env, j, in.type, in.pair, in.content);
    env->CallVoidMethod(policy, j.policyValidate);
    check(env);
    env->CallVoidMethod(j.adapter, j.createPolicy, policy);
    check(env);
    resultText<Owned>(env, checked(env, env->CallObjectMethod(policy, j.policyGetUri)), out.uri);
  }
  Frame frame(env);
  jobject policy = floorPolicy(env, j, in.type, in.pair, in.empty);
  env->CallVoidMethod(j.adapter, j.deletePolicy, policy);
  check(env);
}

template <bool Owned> void floorGetPolicy(JNIEnv* env, Floor& j, const Inputs& in, OwnedOutputs& out) {
  Frame frame(env);
  jobject policy = floorPolicy(env, j, in.type, in.policy, in.content);
  env->CallVoidMethod(j.adapter, j.getPolicy, policy);
  check(env);
  resultText<Owned>(env, checked(env, env->CallObjectMethod(policy, j.policyGetUri)), out.uri);
  resultText<Owned>(env, checked(env, env->CallObjectMethod(policy, j.policyGetDocument)), out.content);
}

void floorPolicyExists(JNIEnv* env, Floor& j, const Inputs& in, OwnedOutputs&) {
  Frame frame(env);
  jobject policy = floorPolicy(env, j, in.type, in.policy, in.empty);
  benchmark::DoNotOptimize(checked(env, env->CallBooleanMethod(j.adapter, j.policyExists, policy)));
}

void floorGetPolicyNames(JNIEnv* env, Floor& j, const Inputs& in, OwnedOutputs&) {
  Frame frame(env);
  jstring type = string(env, in.type);
  read(env, checked(env, env->CallObjectMethod(j.adapter, j.getPolicyNames, type)));
  auto policies = static_cast<jobjectArray>(
      checked(env, env->CallObjectMethod(j.adapter, j.getPoliciesWithoutDoc, type)));
  const jsize count = env->GetArrayLength(policies);
  for (jsize i = 0; i < count; ++i) {
    jobject policy = checked(env, env->GetObjectArrayElement(policies, i));
    read(env, checked(env, env->CallObjectMethod(policy, j.policyGetName)));
  }
}

// The library reads the array's length before every element.
void floorBtdListing(JNIEnv* env, Floor& j, jmethodID read) {
  Frame frame(env);
  auto btds = static_cast<jobjectArray>(checked(env, env->CallObjectMethod(j.adapter, j.getBTDs)));
  for (jsize i = 0; i < env->GetArrayLength(btds); ++i) {
    jobject btd = checked(env, env->GetObjectArrayElement(btds, i));
    ::read(env, checked(env, env->CallObjectMethod(btd, read)));
  }
}

void floorGetService(JNIEnv* env, Floor& j, const Inputs& in, OwnedOutputs&) {
  Frame frame(env);
  jstring name = string(env, in.service);
  jobject service = checked(env, env->CallObjectMethod(j.adapter, j.getService, name));
  for (jmethodID field : {j.serviceGetName, j.serviceGetNamespace, j.serviceGetDocument}) {
    read(env, checked(env, env->CallObjectMethod(service, field)));
  }
}

void floorGetServices(JNIEnv* env, Floor& j, const Inputs&, OwnedOutputs&) {
  Frame frame(env);
  auto services =
      static_cast<jobjectArray>(checked(env, env->CallObjectMethod(j.adapter, j.getServicesWithoutDoc)));
  const jsize count = env->GetArrayLength(services);
  for (jsize i = 0; i < count; ++i) {
    jobject service = checked(env, env->GetObjectArrayElement(services, i));
    read(env, checked(env, env->CallObjectMethod(service, j.serviceGetName)));
    read(env, checked(env, env->CallObjectMethod(service, j.serviceGetNamespace)));
  }
}

struct OwnedNames {
  std::u16string names;
  std::vector<std::u16string> list;
};

void ownedGetPolicyNames(JNIEnv* env, Floor& j, const Inputs& in, OwnedOutputs&) {
  Frame frame(env);
  jstring type = string(env, in.type);
  OwnedNames result;
  result.names = owned(env, checked(env, env->CallObjectMethod(j.adapter, j.getPolicyNames, type)));
  auto policies = static_cast<jobjectArray>(
      checked(env, env->CallObjectMethod(j.adapter, j.getPoliciesWithoutDoc, type)));
  const jsize count = env->GetArrayLength(policies);
  result.list.reserve(static_cast<std::size_t>(count));
  for (jsize i = 0; i < count; ++i) {
    jobject policy = checked(env, env->GetObjectArrayElement(policies, i));
    result.list.push_back(owned(env, checked(env, env->CallObjectMethod(policy, j.policyGetName))));
  }
  benchmark::DoNotOptimize(result);
}

void ownedBtdListing(JNIEnv* env, Floor& j, jmethodID read, std::vector<std::u16string>& list) {
  Frame frame(env);
  auto btds = static_cast<jobjectArray>(checked(env, env->CallObjectMethod(j.adapter, j.getBTDs)));
  list.reserve(list.size() + static_cast<std::size_t>(env->GetArrayLength(btds)));
  for (jsize i = 0; i < env->GetArrayLength(btds); ++i) {
    jobject btd = checked(env, env->GetObjectArrayElement(btds, i));
    list.push_back(owned(env, checked(env, env->CallObjectMethod(btd, read))));
  }
}

void ownedGetService(JNIEnv* env, Floor& j, const Inputs& in, OwnedOutputs&) {
  Frame frame(env);
  jstring name = string(env, in.service);
  jobject service = checked(env, env->CallObjectMethod(j.adapter, j.getService, name));
  std::u16string fields[3];
  std::u16string* field = fields;
  for (jmethodID read : {j.serviceGetName, j.serviceGetNamespace, j.serviceGetDocument}) {
    *field++ = owned(env, checked(env, env->CallObjectMethod(service, read)));
  }
  benchmark::DoNotOptimize(fields);
}

void ownedGetServices(JNIEnv* env, Floor& j, const Inputs&, OwnedOutputs&) {
  Frame frame(env);
  auto services =
      static_cast<jobjectArray>(checked(env, env->CallObjectMethod(j.adapter, j.getServicesWithoutDoc)));
  const jsize count = env->GetArrayLength(services);
  std::vector<std::pair<std::u16string, std::u16string>> result;
  result.reserve(static_cast<std::size_t>(count));
  for (jsize i = 0; i < count; ++i) {
    jobject service = checked(env, env->GetObjectArrayElement(services, i));
    std::u16string name = owned(env, checked(env, env->CallObjectMethod(service, j.serviceGetName)));
    result.emplace_back(std::move(name),
                        owned(env, checked(env, env->CallObjectMethod(service, j.serviceGetNamespace))));
  }
  benchmark::DoNotOptimize(result);
}

struct JavaOperation {
  const char* name;
  void (*library)(Adapter&, const Inputs&, Outputs&);
  using FloorSide = void (*)(JNIEnv*, Floor&, const Inputs&, OwnedOutputs&);
  FloorSide floor;
  // The registry's BTD counts to run at; more than one is a listing's scale.
  std::vector<int> btds = {1000};
  bool threads = false; // also on two threads
  bool trace = false;   // also at trace level 4
  FloorSide owned = nullptr;
  // Records or texts a call lists, for allocations per item; a listing
  // measured at several scales lists its scale.
  int items = 0;
  bool boundToOwned = true;

  FloorSide side(bool ownedSide) const { return ownedSide ? owned : floor; }
};

// An operation bound to the floor, shown beside the owned floor too.
JavaOperation alsoOwned(JavaOperation operation, JavaOperation::FloorSide owned) {
  operation.owned = owned;
  operation.boundToOwned = false;
  return operation;
}

const JavaOperation operations[] = {
    {"btdExists",
     [](Adapter& a, const Inputs& in, Outputs&) { benchmark::DoNotOptimize(a.btdExists(in.btd)); },
     floorBtdExists,
     {1000},
     true,
     true},
    alsoOwned({"getBTD",
               [](Adapter& a, const Inputs& in, Outputs& out) { a.getBTD(in.btd, out.content, out.uri); },
               floorGetBtd<false>,
               {1000},
               true,
               true},
              floorGetBtd<true>),
    alsoOwned({"createBTD+deleteBTD",
               [](Adapter& a, const Inputs& in, Outputs& out) {
                 a.createBTD(in.pair, in.content, out.uri);
                 a.deleteBTD(in.pair);
               },
               floorCreateDeleteBtd<false>},
              floorCreateDeleteBtd<true>),
    alsoOwned({"createPolicy+deletePolicy",
               [](Adapter& a, const Inputs& in, Outputs& out) {
                 a.createPolicy(in.type, in.pair, in.content, out.uri);
                 a.deletePolicy(in.type, in.pair);
               },
               floorCreateDeletePolicy<false>},
              floorCreateDeletePolicy<true>),
    alsoOwned({"getPolicy",
               [](Adapter& a, const Inputs& in, Outputs& out) {
                 a.getPolicy(in.type, in.policy, out.content, out.uri);
               },
               floorGetPolicy<false>},
              floorGetPolicy<true>),
    {"policyExists",
     [](Adapter& a, const Inputs& in, Outputs&) {
       benchmark::DoNotOptimize(a.policyExists(in.type, in.policy));
     },
     floorPolicyExists},
    {"getPolicyNames",
     [](Adapter& a, const Inputs& in, Outputs& out) {
       benchmark::DoNotOptimize(a.getPolicyNames(in.type, out.names));
     },
     floorGetPolicyNames,
     {1000},
     false,
     false,
     ownedGetPolicyNames,
     policyCount},
    {"listBTDs",
     [](Adapter& a, const Inputs&, Outputs& out) {
       out.list.clear();
       a.listBTDs(out.list);
     },
     [](JNIEnv* env, Floor& j, const Inputs&, OwnedOutputs&) { floorBtdListing(env, j, j.btdGetUri); },
     {100, 1000, 10000, 100000},
     false,
     false,
     [](JNIEnv* env, Floor& j, const Inputs&, OwnedOutputs& out) {
       out.list.clear();
       ownedBtdListing(env, j, j.btdGetUri, out.list);
     }},
    {"getBTDNames",
     [](Adapter& a, const Inputs&, Outputs& out) { benchmark::DoNotOptimize(a.getBTDNames(out.names)); },
     [](JNIEnv* env, Floor& j, const Inputs&, OwnedOutputs&) { floorBtdListing(env, j, j.btdGetName); },
     {100, 1000, 10000, 100000},
     false,
     false,
     [](JNIEnv* env, Floor& j, const Inputs&, OwnedOutputs&) {
       OwnedNames result;
       ownedBtdListing(env, j, j.btdGetName, result.list);
       result.names = joined(result.list);
       benchmark::DoNotOptimize(result);
     }},
    {"getService",
     [](Adapter& a, const Inputs& in, Outputs& out) { a.getService(in.service, out.service); },
     floorGetService,
     {1000},
     false,
     false,
     ownedGetService,
     3},
    {"getServices",
     [](Adapter& a, const Inputs&, Outputs&) { benchmark::DoNotOptimize(a.getServices()); },
     floorGetServices,
     {1000},
     false,
     false,
     ownedGetServices,
     serviceCount},
};

// A listing's cost per item shows as the counter per_item.
void countItems(benchmark::State& state, const JavaOperation& operation, std::uint64_t allocations) {
  if (operation.btds.size() > 1) {
    state.counters["per_item"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  }
  const int items = operation.btds.size() > 1 ? static_cast<int>(state.range(0)) : operation.items;
  countAllocations(state, allocations, items);
}

void runLibrary(benchmark::State& state, const JavaOperation& operation, int traceLevel) {
  JavaRegistry& registry = JavaRegistry::instance();
  registry.holdBtds(static_cast<int>(state.range(0)));
  // The trace setting is process-wide: threads leave it at its default, off.
  std::optional<TraceSetting> trace;
  if (state.threads() == 1) {
    trace.emplace(traceLevel);
  }
  const Inputs in;
  Outputs out;
  const std::uint64_t before = allocations();
  for (auto _ : state) {
    operation.library(registry.adapter(), in, out);
  }
  countItems(state, operation, allocations() - before);
  if (trace) {
    trace->report(state);
  }
}

void runFloor(benchmark::State& state, const JavaOperation& operation, bool owned) {
  JavaRegistry::instance().holdBtds(static_cast<int>(state.range(0)));
  const FloorJni& jni = floorJni();
  JNIEnv* env = KorJVM::getEnvironment();
  const Inputs in;
  OwnedOutputs out;
  const std::uint64_t before = allocations();
  const JavaOperation::FloorSide side = operation.side(owned);
  for (auto _ : state) {
    side(env, jni, in, out);
  }
  countItems(state, operation, allocations() - before);
}

void withSizes(benchmark::internal::Benchmark* benchmark, const JavaOperation& operation) {
  for (int count : operation.btds) {
    benchmark->Arg(count);
  }
  if (operation.threads) {
    benchmark->Threads(1)->Threads(2)->UseRealTime();
  }
}

// The library beside its floor, or beside the owned floor, at count BTDs.
PairSides javaSides(const JavaOperation& operation, int count, bool owned) {
  JavaRegistry::instance().holdBtds(count);
  auto kept = std::make_shared<std::tuple<Inputs, Outputs, OwnedOutputs>>();
  Inputs* in = &std::get<0>(*kept);
  Outputs* out = &std::get<1>(*kept);
  OwnedOutputs* ownedOut = &std::get<2>(*kept);
  Adapter* adapter = &JavaRegistry::instance().adapter();
  JNIEnv* env = KorJVM::getEnvironment();
  const FloorJni* jni = &floorJni();
  const JavaOperation* op = &operation;
  const JavaOperation::FloorSide side = op->side(owned);
  return {[=] { op->library(*adapter, *in, *out); }, [=] { side(env, *jni, *in, *ownedOut); }, kept};
}

int registerJavaBenchmarks() {
  for (const JavaOperation& operation : operations) {
    const std::string name = operation.name;
    withSizes(benchmark::RegisterBenchmark(("library/" + name).c_str(), runLibrary, operation, 0), operation);
    withSizes(benchmark::RegisterBenchmark(("floor/" + name).c_str(), runFloor, operation, false), operation);
    const bool toOwned = operation.owned != nullptr && operation.boundToOwned;
    if (toOwned) {
      withSizes(benchmark::RegisterBenchmark(("owned/" + name).c_str(), runFloor, operation, true),
                operation);
    }
    for (int count : operation.btds) {
      const std::string scaled = name + "/" + std::to_string(count);
      registerPair("library/" + scaled, toOwned ? 0 : 1.05, true,
                   [&operation, count] { return javaSides(operation, count, false); });
      if (operation.owned != nullptr) {
        registerPair("owned/" + scaled, toOwned ? 1.05 : 0, true,
                     [&operation, count] { return javaSides(operation, count, true); });
      }
    }
    if (operation.trace) {
      benchmark::RegisterBenchmark(("trace4/" + name).c_str(), runLibrary, operation, 4)
          ->Arg(operation.btds.front());
    }
  }
  return 0;
}

[[maybe_unused]] const int registered = registerJavaBenchmarks();

// One text kept from a listing of 100,000, by the library and by the owned
// floor: the two differ by the kept text alone. Both leave the JVM's blocks
// of the listing's local references on the thread, until it ends.
int registerHeldBenchmarks() {
  constexpr int count = 100000;
  struct Row {
    const char* name;
    jmethodID FloorJni::*read;
    std::function<KorWstring(Adapter&)> keepOne;
  };
  static const Row rows[] = {
      {"getBTDNames", &FloorJni::btdGetName,
       [](Adapter& adapter) {
         KorWstring names;
         return adapter.getBTDNames(names).back();
       }},
      {"listBTDs", &FloorJni::btdGetUri,
       [](Adapter& adapter) {
         std::vector<KorWstring> uris;
         adapter.listBTDs(uris);
         return uris.back();
       }},
  };
  for (const Row& row : rows) {
    const std::string suffix = std::string(row.name) + "/100000";
    benchmark::RegisterBenchmark(("held/library/" + suffix).c_str(), [&row](benchmark::State& state) {
      JavaRegistry::instance().holdBtds(count);
      KorWstring kept;
      measureHeld(state, [&] { kept = row.keepOne(JavaRegistry::instance().adapter()); });
    })->Iterations(1);
    benchmark::RegisterBenchmark(("held/owned/" + suffix).c_str(), [&row](benchmark::State& state) {
      JavaRegistry::instance().holdBtds(count);
      std::u16string kept;
      measureHeld(state, [&] {
        std::vector<std::u16string> list;
        ownedBtdListing(KorJVM::getEnvironment(), floorJni(), floorJni().*row.read, list);
        kept = list.back();
      });
    })->Iterations(1);
  }
  return 0;
}

[[maybe_unused]] const int heldRegistered = registerHeldBenchmarks();

} // namespace
