// The in-memory registry's operations beside the same work on
// std::map<std::u16string, ...>, and the allocation count of a KorWstring copy.
#include "BenchSupport.hpp"
#include "PairBench.hpp"

#include <KorISRAdapterStub.hpp>
#include <KorWstringText.hpp>

#include <algorithm>
#include <map>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace bench;

const std::u16string btdUriPrefix = u"/apiv1/business/businesstransactions/";

// The baseline: the in-memory registry's stores with standard strings.
struct MapRegistry {
  struct Btd {
    std::u16string content, uri;
  };
  struct Policy {
    std::u16string type, name, document, uri;
  };
  std::map<std::u16string, Btd> btds;
  std::map<std::u16string, std::map<std::u16string, Policy>> policies;
};

// One side's inputs and reused outputs. Lookups walk a fixed pseudo-random
// sample of the names, so that a large store is not read from a warm path.
template <typename Text> struct Probe {
  std::vector<Text> keys;
  std::size_t next = 0;
  Text type, policy, pair, content, uri, outContent, names;
  std::vector<Text> list;

  const Text& key() {
    const Text& current = keys[next];
    next = next + 1 == keys.size() ? 0 : next + 1;
    return current;
  }
};

std::u16string standard(const KorWstring& text) {
  return std::u16string(KorWstringText::view(text));
}

// Both stores with count BTDs and the policies, built once per count.
struct Stores {
  KorISRAdapterStub stub;
  MapRegistry map;
  Probe<KorWstring> stubProbe;
  Probe<std::u16string> mapProbe;

  // Each side's store is built in a loop of its own, so that the two lie in
  // separate stretches of the heap: built together, a key's node in one store
  // sat beside its node in the other, and the side that walked a key second
  // found its pages and lines warmed by the first. Both insert in one shuffled
  // order: in ascending order each store's nodes lay at a fixed stride, and the
  // nodes an insertion at the end walks shared a few sets of the L1 cache.
  explicit Stores(int count) {
    const KorWstring content = document(documentLength);
    const KorWstring type = text("Security");
    std::vector<int> order(static_cast<std::size_t>(count));
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), std::minstd_rand(12345));
    KorWstring uri;
    for (int i : order) {
      uri.clear();
      stub.createBTD(numbered("btd", i), content, uri);
    }
    for (int i = 0; i < policyCount; ++i) {
      uri.clear();
      stub.createPolicy(type, numbered("policy", i), content, uri);
    }
    for (int i : order) {
      const std::u16string name = standard(numbered("btd", i));
      map.btds.emplace(name, MapRegistry::Btd{standard(content), btdUriPrefix + name});
    }
    KorWstring stored;
    for (int i = 0; i < policyCount; ++i) {
      const KorWstring name = numbered("policy", i);
      stub.getPolicy(type, name, stored, uri);
      map.policies[standard(type)].emplace(
          standard(name),
          MapRegistry::Policy{standard(type), standard(name), standard(content), standard(uri)});
    }
    // The same pseudo-random sample for both sides, each key the caller's own
    // text (not a copy sharing the stored one).
    const int samples = std::min(count, 1 << 16);
    std::uint32_t random = 12345;
    for (int i = 0; i < samples; ++i) {
      random = random * 1664525 + 1013904223;
      const KorWstring name = numbered("btd", static_cast<int>(random % static_cast<std::uint32_t>(count)));
      stubProbe.keys.emplace_back(name.data(), name.length());
    }
    for (const KorWstring& name : stubProbe.keys) {
      mapProbe.keys.push_back(standard(name));
    }
    stubProbe.type = type;
    stubProbe.policy = numbered("policy", 0);
    stubProbe.pair = text("pair");
    stubProbe.content = content;
    mapProbe.type = standard(stubProbe.type);
    mapProbe.policy = standard(stubProbe.policy);
    mapProbe.pair = standard(stubProbe.pair);
    mapProbe.content = standard(content);
  }

  static Stores& holding(int count) {
    static std::map<int, std::unique_ptr<Stores>> built;
    auto& stores = built[count];
    if (stores == nullptr) {
      stores = std::make_unique<Stores>(count);
    }
    return *stores;
  }
};

using Stub = KorISRAdapterStub;
using StubProbe = Probe<KorWstring>;
using MapProbe = Probe<std::u16string>;

const MapRegistry::Policy* findPolicy(MapRegistry& map, const std::u16string& type,
                                      const std::u16string& name) {
  const auto byType = map.policies.find(type);
  if (byType == map.policies.end()) {
    return nullptr;
  }
  const auto policy = byType->second.find(name);
  return policy == byType->second.end() ? nullptr : &policy->second;
}

void appendName(std::u16string& names, const std::u16string& name) {
  if (!names.empty()) {
    names += u' ';
  }
  names += name;
}

struct InMemoryOperation {
  const char* name;
  void (*library)(Stub&, StubProbe&);
  void (*baseline)(MapRegistry&, MapProbe&);
  std::vector<int> btds = {1000};
  int items = 0; // names a call lists, when not its scale
};

const InMemoryOperation operations[] = {
    {"btdExists",
     [](Stub& s, StubProbe& p) { benchmark::DoNotOptimize(s.btdExists(p.key())); },
     [](MapRegistry& m, MapProbe& p) { benchmark::DoNotOptimize(m.btds.count(p.key()) != 0); },
     {1000, 1000000}},
    {"getBTD",
     [](Stub& s, StubProbe& p) { s.getBTD(p.key(), p.outContent, p.uri); },
     [](MapRegistry& m, MapProbe& p) {
       const auto found = m.btds.find(p.key());
       p.outContent = found->second.content;
       p.uri = found->second.uri;
     },
     {1000, 1000000}},
    {"createBTD+deleteBTD",
     [](Stub& s, StubProbe& p) {
       p.uri.clear();
       s.createBTD(p.pair, p.content, p.uri);
       s.deleteBTD(p.pair);
     },
     [](MapRegistry& m, MapProbe& p) {
       p.uri.clear();
       if (m.btds.find(p.pair) == m.btds.end()) {
         const std::u16string storedUri = p.uri.empty() ? btdUriPrefix + p.pair : p.uri;
         m.btds.emplace(p.pair, MapRegistry::Btd{p.content, storedUri});
         p.uri = storedUri;
       }
       m.btds.erase(p.pair);
     }},
    {"getPolicy", [](Stub& s, StubProbe& p) { s.getPolicy(p.type, p.policy, p.outContent, p.uri); },
     [](MapRegistry& m, MapProbe& p) {
       const MapRegistry::Policy* policy = findPolicy(m, p.type, p.policy);
       p.outContent = policy->document;
       p.uri = policy->uri;
     }},
    {"policyExists",
     [](Stub& s, StubProbe& p) { benchmark::DoNotOptimize(s.policyExists(p.type, p.policy)); },
     [](MapRegistry& m, MapProbe& p) {
       benchmark::DoNotOptimize(findPolicy(m, p.type, p.policy) != nullptr);
     }},
    {"getPolicyNames",
     [](Stub& s, StubProbe& p) {
       p.names.clear();
       benchmark::DoNotOptimize(s.getPolicyNames(p.type, p.names));
     },
     [](MapRegistry& m, MapProbe& p) {
       p.names.clear();
       std::vector<std::u16string> result;
       for (const auto& entry : m.policies.find(p.type)->second) {
         appendName(p.names, entry.first);
         result.push_back(entry.first);
       }
       benchmark::DoNotOptimize(result);
     },
     {1000},
     policyCount},
    {"listBTDs",
     [](Stub& s, StubProbe& p) {
       p.list.clear();
       s.listBTDs(p.list);
     },
     [](MapRegistry& m, MapProbe& p) {
       p.list.clear();
       for (const auto& entry : m.btds) {
         p.list.push_back(entry.second.uri);
       }
     },
     {100, 1000, 10000, 100000}},
    {"getBTDNames",
     [](Stub& s, StubProbe& p) { benchmark::DoNotOptimize(s.getBTDNames(p.names)); },
     [](MapRegistry& m, MapProbe& p) {
       std::vector<std::u16string> result;
       p.names.clear();
       for (const auto& entry : m.btds) {
         result.push_back(entry.first);
         appendName(p.names, entry.first);
       }
       benchmark::DoNotOptimize(result);
     },
     {100, 1000, 10000, 100000}},
};

void countItems(benchmark::State& state, const InMemoryOperation& operation, std::uint64_t allocations) {
  if (operation.btds.size() > 1) {
    state.counters["per_item"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  }
  countAllocations(state, allocations,
                   operation.btds.size() > 1 ? static_cast<double>(state.range(0)) : operation.items);
}

void runLibrary(benchmark::State& state, const InMemoryOperation& operation) {
  Stores& stores = Stores::holding(static_cast<int>(state.range(0)));
  const TraceSetting trace(0);
  const std::uint64_t before = allocations();
  for (auto _ : state) {
    operation.library(stores.stub, stores.stubProbe);
  }
  countItems(state, operation, allocations() - before);
  trace.report(state);
}

void runBaseline(benchmark::State& state, const InMemoryOperation& operation) {
  Stores& stores = Stores::holding(static_cast<int>(state.range(0)));
  const std::uint64_t before = allocations();
  for (auto _ : state) {
    operation.baseline(stores.map, stores.mapProbe);
  }
  countItems(state, operation, allocations() - before);
}

int registerInMemoryBenchmarks() {
  for (const InMemoryOperation& operation : operations) {
    const std::string name = operation.name;
    auto* library = benchmark::RegisterBenchmark(("stub/" + name).c_str(), runLibrary, operation);
    auto* baseline = benchmark::RegisterBenchmark(("map/" + name).c_str(), runBaseline, operation);
    for (int count : operation.btds) {
      library->Arg(count);
      baseline->Arg(count);
      registerPair(
          "stub/" + name + "/" + std::to_string(count), 1.10, false,
          [&operation, count] {
            Stores& stores = Stores::holding(count);
            return PairSides{[&] { operation.library(stores.stub, stores.stubProbe); },
                             [&] { operation.baseline(stores.map, stores.mapProbe); }, nullptr};
          },
          [count] { Stores::holding(count); });
    }
  }
  return 0;
}

[[maybe_unused]] const int registered = registerInMemoryBenchmarks();

// One text kept from a listing of 100,000: a copy of the stored text, which
// holds nothing of its own, beside a std::u16string copied from a map.
int registerHeldBenchmarks() {
  constexpr int count = 100000;
  benchmark::RegisterBenchmark("held/stub/getBTDNames/100000", [](benchmark::State& state) {
    KorISRAdapterStub& stub = Stores::holding(count).stub;
    KorWstring kept;
    measureHeld(state, [&] {
      KorWstring names;
      kept = stub.getBTDNames(names).back();
    });
  })->Iterations(1);
  benchmark::RegisterBenchmark("held/stub/listBTDs/100000", [](benchmark::State& state) {
    KorISRAdapterStub& stub = Stores::holding(count).stub;
    KorWstring kept;
    measureHeld(state, [&] {
      std::vector<KorWstring> uris;
      stub.listBTDs(uris);
      kept = uris.back();
    });
  })->Iterations(1);
  benchmark::RegisterBenchmark("held/map/listBTDs/100000", [](benchmark::State& state) {
    const MapRegistry& map = Stores::holding(count).map;
    std::u16string kept;
    measureHeld(state, [&] {
      std::vector<std::u16string> uris;
      for (const auto& entry : map.btds) {
        uris.push_back(entry.second.uri);
      }
      kept = uris.back();
    });
  })->Iterations(1);
  return 0;
}

[[maybe_unused]] const int heldRegistered = registerHeldBenchmarks();

// A copy shares the buffer: the counter allocations must read 0.
void korWstringCopy(benchmark::State& state) {
  const KorWstring original = document(documentLength);
  const std::uint64_t before = allocations();
  for (auto _ : state) {
    KorWstring copy(original);
    benchmark::DoNotOptimize(copy);
  }
  countAllocations(state, allocations() - before, 0);
}
BENCHMARK(korWstringCopy)->Name("copy/KorWstring");

} // namespace
