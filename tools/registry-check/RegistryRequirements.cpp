// What the library needs of the Java registry's answers, checked through the
// adapter as the broker calls it. Every name a check makes is its own (the
// run's prefix and the row's id) and is removed after the row.

#include "Requirements.hpp"

#include "GlobalReferences.hpp"

#include <KorWstringText.hpp>

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <iterator>
#include <optional>
#include <regex>
#include <thread>

namespace {

using Kind = Probe::Kind;
using Texts = std::vector<KorWstring>;

KorWstring text(std::u16string_view units) {
  return KorWstringText::fromUtf16(units);
}

KorWstring operator+(KorWstring head, std::u16string_view tail) {
  return head.append(tail.data(), tail.size());
}

std::size_t count(const Texts& texts, const KorWstring& text) {
  return static_cast<std::size_t>(std::count(texts.begin(), texts.end(), text));
}

std::string once(const Texts& texts, const KorWstring& text, const char* what) {
  return std::to_string(texts.size()) + " " + what + ", " + std::to_string(count(texts, text)) + " of them " +
         shown(text);
}

const KorWstring reservedType = text(u"BusinessTransactionDefinition");
// Types the round trips use; the last is the reserved one in other letter case, an ordinary type.
const char16_t* const policyTypes[] = {u"Security", u"Transport", u"businesstransactiondefinition"};
const KorWstring btdContent = text(u"<btd/>");
const KorWstring policyDocument = text(u"<policy/>");

// BTDs.

KorWstring createBTD(Probe& p, const KorWstring& name, const KorWstring& content, bool update = false) {
  KorWstring uri;
  if (update) {
    p.call("updateBTD", {name, content}, [&] { p.registry().updateBTD(name, content, uri); });
  } else {
    p.made(Kind::btd, name);
    p.call("createBTD", {name, content}, [&] { p.registry().createBTD(name, content, uri); });
  }
  return uri;
}

struct Stored {
  KorWstring document;
  KorWstring uri;
};

Stored getBTD(Probe& p, const KorWstring& name) {
  Stored stored;
  p.call("getBTD", {name, stored.document}, [&] { p.registry().getBTD(name, stored.document, stored.uri); });
  return stored;
}

bool btdExists(Probe& p, const KorWstring& name) {
  return p.call("btdExists", {name}, [&] { return p.registry().btdExists(name); });
}

Texts listBTDs(Probe& p) {
  Texts uris;
  p.call("listBTDs", {}, [&] { p.registry().listBTDs(uris); });
  return uris;
}

Texts getBTDNames(Probe& p) {
  KorWstring names;
  return p.call("getBTDNames", {}, [&] { return p.registry().getBTDNames(names); });
}

void expectStored(Probe& p, const Stored& read, const KorWstring& document, const KorWstring& uri) {
  p.expect(read.document == document, "the document " + shown(read.document),
           "the document last stored, " + shown(document));
  p.expect(read.uri == uri, "the URI " + shown(read.uri), "the URI the store answered, " + shown(uri));
}

void expectListedOnce(Probe& p, const Texts& texts, const KorWstring& text, const char* what) {
  p.expect(count(texts, text) == 1, once(texts, text, what), "the stored one listed exactly once");
}

void btdRoundTrip(Probe& p, const KorWstring& name, const KorWstring& content) {
  KorWstring uri = createBTD(p, name, content);
  p.expect(btdExists(p, name), "false", "true: the BTD was just created");
  expectStored(p, getBTD(p, name), content, uri);
  const KorWstring changed = content + u"<changed/>";
  uri = createBTD(p, name, changed, true);
  expectStored(p, getBTD(p, name), changed, uri);
  expectListedOnce(p, listBTDs(p), uri, "URIs");
  expectListedOnce(p, getBTDNames(p), name, "names");
  p.call("deleteBTD", {name}, [&] { p.registry().deleteBTD(name); });
  p.expect(!btdExists(p, name), "true", "false: the BTD was just deleted");
}

// Policies.

KorWstring storePolicy(Probe& p, const KorWstring& type, const KorWstring& name, const KorWstring& document,
                       bool update = false) {
  KorWstring uri;
  if (update) {
    p.call("updatePolicy", {type, name, document},
           [&] { p.registry().updatePolicy(type, name, document, uri); });
  } else {
    p.made(type == reservedType ? Kind::btd : Kind::policy, name, type);
    p.call("createPolicy", {type, name, document},
           [&] { p.registry().createPolicy(type, name, document, uri); });
  }
  return uri;
}

Stored getPolicy(Probe& p, const KorWstring& type, const KorWstring& name) {
  Stored stored;
  p.call("getPolicy", {type, name, stored.document},
         [&] { p.registry().getPolicy(type, name, stored.document, stored.uri); });
  return stored;
}

bool policyExists(Probe& p, const KorWstring& type, const KorWstring& name) {
  return p.call("policyExists", {type, name}, [&] { return p.registry().policyExists(type, name); });
}

Texts getPolicyNames(Probe& p, const KorWstring& type) {
  KorWstring names;
  return p.call("getPolicyNames", {type}, [&] { return p.registry().getPolicyNames(type, names); });
}

void policyRoundTrip(Probe& p, const KorWstring& type, const KorWstring& name, const KorWstring& document) {
  KorWstring uri = storePolicy(p, type, name, document);
  p.expect(policyExists(p, type, name), "false", "true: the policy was just created");
  expectStored(p, getPolicy(p, type, name), document, uri);
  const KorWstring changed = document + u"<changed/>";
  uri = storePolicy(p, type, name, changed, true);
  expectStored(p, getPolicy(p, type, name), changed, uri);
  expectListedOnce(p, getPolicyNames(p, type), name, "names");
  p.call("deletePolicy", {type, name}, [&] { p.registry().deletePolicy(type, name); });
  p.expect(!policyExists(p, type, name), "true", "false: the policy was just deleted");
}

// Services.

std::optional<KorISRService> getService(Probe& p, const KorWstring& name) {
  KorISRService service;
  bool found = p.call("getService", {name}, [&] { return p.registry().getService(name, service); });
  return found ? std::optional<KorISRService>(service) : std::nullopt;
}

bool serviceExists(Probe& p, const KorWstring& name, const KorWstring& space) {
  return p.call("serviceExists", {name, space}, [&] { return p.registry().serviceExists(name, space); });
}

std::string shown(const std::optional<KorISRService>& service) {
  return service ? "the service " + shown(service->name) + " in " + shown(service->serviceNamespace) +
                       ", document " + shown(service->document)
                 : "false: no such service";
}

void serviceRoundTrip(Probe& p, const KorWstring& name, const KorWstring& space, const KorWstring& document) {
  p.made(Kind::service, name, space);
  p.call("createService", {name, space, document},
         [&] { p.registry().createService(name, space, document); });
  p.expect(serviceExists(p, name, space), "false", "true: the service was just created");
  std::optional<KorISRService> read = getService(p, name);
  p.expect(read && read->name == name && read->serviceNamespace == space && read->document == document,
           shown(read),
           "the service as created: " +
               shown(std::optional<KorISRService>(KorISRService(name, space, document))));
  std::vector<KorISRService> all = p.call("getServices", {}, [&] { return p.registry().getServices(); });
  auto listed = std::count_if(all.begin(), all.end(), [&](const KorISRService& service) {
    return service.name == name && service.serviceNamespace == space;
  });
  p.expect(listed == 1,
           std::to_string(all.size()) + " services, " + std::to_string(listed) + " of them " + shown(name),
           "the stored one listed exactly once, with its namespace");
  p.call("deleteService", {name}, [&] { p.registry().deleteService(name); });
  p.expect(!getService(p, name), shown(getService(p, name)), "false: the service was just deleted");
  p.expect(!serviceExists(p, name, space), "true", "false: the service was just deleted");
}

// Failures: what the operation raised, against what the library needs; what
// the exception carries is the "known exception" row's.
void expectKnown(Probe& p, const std::shared_ptr<const KorException>& error, Verdict ifAnswered) {
  const std::string needed = "an LxRecoverableException (or a subclass)";
  if (error == nullptr) {
    // Either rule is the registry's own to choose: shown as information.
    p.note(ifAnswered, "it answered normally",
           ifAnswered == Verdict::pass ? "either an answer or " + needed +
                                             ": the registry decides which "
                                             "names exist, and the library passes on either"
                                       : needed + ": the library raises DRX3701 when it gets nothing else");
  } else if (isLibraryMessage(*error)) {
    p.note(Verdict::fail, shownRaise(*error), needed);
  }
}

// An insert the broker can show: a text, not Object.toString's class@hash.
bool readable(const KorWstring& insert) {
  static const std::regex objectToString("[\\w.$]+@[0-9a-f]+");
  return !std::regex_match(KorWstringText::toUtf8(insert), objectToString);
}

void knownException(Probe& p) {
  const KorWstring name = p.name(u"missing");
  KorWstring content;
  KorWstring uri;
  std::shared_ptr<const KorException> error =
      p.raised("getBTD", {name, content}, [&] { p.registry().getBTD(name, content, uri); });
  p.expect(error != nullptr && !isLibraryMessage(*error), error ? shownRaise(*error) : "an answer",
           "an LxRecoverableException");
  const std::string prints = ": the broker prints \"" + std::string(error->what()) + "\"";
  Texts inserts = error->textInserts();
  if (error->messageNumber() == 0) {
    p.note(Verdict::fail, "message number 0" + prints,
           "the registry's own message number, the constructor's first argument: the broker shows it as the "
           "message's number");
  }
  if (inserts.empty() || inserts.front().empty()) {
    p.note(Verdict::fail, "no trace text" + prints,
           "a trace text, the constructor's second argument: the library hands it to the broker as the "
           "message's first insert");
  }
  for (std::size_t i = 1; i < inserts.size(); ++i) {
    if (!readable(inserts[i])) {
      p.note(Verdict::fail, "the insert " + shown(inserts[i]) + prints,
             "inserts whose toString is a text: the library hands the broker what toString answers");
    }
  }
  bool named = std::any_of(inserts.begin(), inserts.end(), [&](const KorWstring& insert) {
    return KorWstringText::view(insert).find(KorWstringText::view(name)) != std::u16string_view::npos;
  });
  if (!named) {
    p.note(Verdict::warning, shownRaise(*error),
           "an insert naming " + shown(name) + ", for the broker's user");
  }
}

using Raise = std::shared_ptr<const KorException>;

void missingBTD(Probe& p) {
  KorISRAdapter& r = p.registry();
  const KorWstring name = p.name(u"missing");
  KorWstring content = btdContent;
  KorWstring uri;
  expectKnown(p, p.raised("getBTD", {name, content}, [&] { r.getBTD(name, content, uri); }), Verdict::fail);
  p.made(Kind::btd, name);
  expectKnown(p, p.raised("updateBTD", {name, content}, [&] { r.updateBTD(name, content, uri); }),
              Verdict::fail);
  expectKnown(p, p.raised("deleteBTD", {name}, [&] { r.deleteBTD(name); }), Verdict::pass);
}

void existingBTD(Probe& p) {
  const KorWstring name = p.name(u"twice");
  createBTD(p, name, btdContent);
  KorWstring uri;
  expectKnown(
      p, p.raised("createBTD", {name, btdContent}, [&] { p.registry().createBTD(name, btdContent, uri); }),
      Verdict::pass);
}

void missingPolicy(Probe& p) {
  KorISRAdapter& r = p.registry();
  const KorWstring type = text(u"Security");
  const KorWstring name = p.name(u"missing");
  KorWstring document = policyDocument;
  KorWstring uri;
  expectKnown(p,
              p.raised("getPolicy", {type, name, document}, [&] { r.getPolicy(type, name, document, uri); }),
              Verdict::fail);
  p.made(Kind::policy, name, type);
  expectKnown(
      p, p.raised("updatePolicy", {type, name, document}, [&] { r.updatePolicy(type, name, document, uri); }),
      Verdict::fail);
  expectKnown(p, p.raised("deletePolicy", {type, name}, [&] { r.deletePolicy(type, name); }), Verdict::pass);
}

void existingPolicy(Probe& p) {
  const KorWstring type = text(u"Security");
  const KorWstring name = p.name(u"twice");
  storePolicy(p, type, name, policyDocument);
  KorWstring uri;
  expectKnown(p,
              p.raised("createPolicy", {type, name, policyDocument},
                       [&] { p.registry().createPolicy(type, name, policyDocument, uri); }),
              Verdict::pass);
}

void missingService(Probe& p) {
  const KorWstring name = p.name(u"missing");
  expectKnown(p, p.raised("deleteService", {name}, [&] { p.registry().deleteService(name); }), Verdict::pass);
}

// Concurrency: threads that each store, read, list and delete BTDs of their own.
const int threadCount = 8;
const int roundsPerThread = 25;

void oneThread(Probe& p) {
  Texts live;
  for (int round = 0; round < roundsPerThread; ++round) {
    const std::u16string number(1, static_cast<char16_t>(u'a' + round));
    const KorWstring name = p.name(number);
    const KorWstring content = btdContent + number;
    live.push_back(createBTD(p, name, content));
    expectStored(p, getBTD(p, name), content, live.back());
    Texts uris = listBTDs(p);
    for (const KorWstring& uri : live) {
      p.expect(count(uris, uri) == 1, once(uris, uri, "URIs"),
               "every BTD this thread stored listed exactly once, whatever the other threads do meanwhile");
    }
  }
  for (int round = 0; round < roundsPerThread; ++round) {
    const KorWstring name = p.name(std::u16string(1, static_cast<char16_t>(u'a' + round)));
    p.call("deleteBTD", {name}, [&] { p.registry().deleteBTD(name); });
    p.expect(!btdExists(p, name), "true", "false: this thread just deleted it");
  }
}

// Runs body on every thread at once, each with a probe of its scope; their evidence joins the row's.
void onThreads(Probe& p, const std::function<std::u16string(int)>& scope,
               const std::function<void(Probe&, int)>& body) {
  std::vector<Probe> probes;
  probes.reserve(threadCount);
  for (int thread = 0; thread < threadCount; ++thread) {
    probes.emplace_back(p.run(), scope(thread));
  }
  std::vector<std::thread> threads;
  threads.reserve(probes.size());
  for (int thread = 0; thread < threadCount; ++thread) {
    threads.emplace_back([&body, &probe = probes[thread], thread] {
      try {
        body(probe, thread);
      } catch (const Evidence& evidence) {
        probe.evidence.push_back(evidence);
      } catch (const KorException& error) {
        probe.note(Verdict::fail, shownRaise(error),
                   "an answer: other threads at work do not disturb this one");
      }
      probe.removeWhatWasMade();
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (Probe& probe : probes) {
    p.evidence.insert(p.evidence.end(), probe.evidence.begin(), probe.evidence.end());
  }
}

std::u16string digit(int number) {
  return std::u16string(1, static_cast<char16_t>(u'0' + number));
}

void concurrency(Probe& p) {
  onThreads(
      p, [](int thread) { return u"concurrency-" + digit(thread); },
      [](Probe& probe, int /*thread*/) { oneThread(probe); });
}

// Two threads taking turns: each waits for its turn, acts, and hands the turn on.
class Turns {
public:
  // False when the other thread stopped.
  bool await(int turn) {
    std::unique_lock<std::mutex> lock(mutex_);
    ready_.wait(lock, [&] { return turn_ == turn || stopped_; });
    return !stopped_;
  }
  void next() {
    std::lock_guard<std::mutex> lock(mutex_);
    ++turn_;
    ready_.notify_all();
  }
  void stop() {
    std::lock_guard<std::mutex> lock(mutex_);
    stopped_ = true;
    ready_.notify_all();
  }

private:
  std::mutex mutex_;
  std::condition_variable ready_;
  int turn_ = 0;
  bool stopped_ = false;
};

enum class Write { create, update, remove };
struct Handover {
  int writer; // 0 or 1 of the pair; the other reads
  Write write;
};
// Each write in both directions.
const Handover handovers[] = {{0, Write::create}, {1, Write::update}, {0, Write::remove},
                              {1, Write::create}, {0, Write::update}, {1, Write::remove}};
const int visibilityRounds = 5;

void readAfter(Probe& p, const KorWstring& name, const Handover& handover, const KorWstring& content) {
  const std::string after =
      "the other thread's " +
      std::string(handover.write == Write::create   ? "createBTD"
                  : handover.write == Write::update ? "updateBTD"
                                                    : "deleteBTD") +
      " returned before this call: a broker's flows read on other threads what one wrote";
  if (handover.write == Write::remove) {
    p.expect(!btdExists(p, name), "true", "false: " + after);
    return;
  }
  p.expect(handover.write == Write::update || btdExists(p, name), "false", "true: " + after);
  Stored read = getBTD(p, name);
  p.expect(read.document == content, "the document " + shown(read.document), shown(content) + ": " + after);
}

// One of a pair: writes when the handover is its own, else reads the other's write at once.
void handOver(Probe& p, Turns& turns, int self) {
  for (int round = 0; round < visibilityRounds; ++round) {
    const KorWstring name = p.name(digit(round));
    int turn = round * 2 * static_cast<int>(std::size(handovers));
    for (const Handover& handover : handovers) {
      const KorWstring content = btdContent + digit(static_cast<int>(handover.write) + round);
      const bool writes = handover.writer == self;
      if (!turns.await(writes ? turn : turn + 1)) {
        return;
      }
      if (!writes) {
        readAfter(p, name, handover, content);
      } else if (handover.write == Write::remove) {
        p.call("deleteBTD", {name}, [&] { p.registry().deleteBTD(name); });
      } else {
        createBTD(p, name, content, handover.write == Write::update);
      }
      turns.next();
      turn += 2;
    }
  }
}

void visibility(Probe& p) {
  std::vector<Turns> pairs(threadCount / 2);
  onThreads(
      p, [](int thread) { return u"visibility-" + digit(thread / 2); },
      [&pairs](Probe& probe, int thread) {
        Turns& turns = pairs[static_cast<std::size_t>(thread / 2)];
        try {
          handOver(probe, turns, thread % 2);
        } catch (...) {
          turns.stop();
          throw;
        }
      });
}

// Hygiene, over every call made before.
void nothingPending(Probe& p) {
  std::lock_guard<std::mutex> lock(p.run().mutex);
  p.evidence.insert(p.evidence.end(), p.run().leftPending.begin(), p.run().leftPending.end());
}

void globalReferencesBalanced(Probe& p) {
  const long now = liveGlobalReferences();
  const long calls = p.run().calls;
  if (now == noCount) {
    throw Evidence{Verdict::warning, "NewGlobalRef and DeleteGlobalRef",
                   "not counted: the JVM did not let the JNI function table be replaced",
                   "as many global references after the run as before it"};
  }
  if (now != p.run().globalReferencesBefore) {
    throw Evidence{Verdict::fail, "NewGlobalRef and DeleteGlobalRef over " + std::to_string(calls) + " calls",
                   std::to_string(now - p.run().globalReferencesBefore) +
                       " global references more than before",
                   "as many as before the first call: each one made is deleted again"};
  }
}

// What the run left in the registry under its prefix, after every row removed what it made.
void nothingLeft(Probe& p) {
  const KorWstring prefix = KorWstringText::fromUtf16(p.run().prefix);
  auto left = [&](const KorWstring& name) {
    return KorWstringText::view(name).substr(0, prefix.length()) == KorWstringText::view(prefix);
  };
  Texts names = getBTDNames(p);
  for (const char16_t* type : policyTypes) {
    Texts policies = getPolicyNames(p, text(type));
    names.insert(names.end(), policies.begin(), policies.end());
  }
  for (const KorISRService& service : p.call("getServices", {}, [&] { return p.registry().getServices(); })) {
    names.push_back(service.name);
  }
  for (const KorWstring& name : names) {
    p.expect(!left(name), "still there: " + shown(name),
             "nothing under the run's prefix: each one was deleted");
  }
}

struct TextCase {
  const char* label;
  std::u16string name;
  std::u16string document;
  bool policyDocument = true; // whether a policy may carry it: a registry may refuse a blank one
};

std::u16string megabyte() {
  std::u16string units(std::size_t{1} << 20, u'x');
  units.front() = u'<';
  units.back() = u'>';
  return units;
}

// Texts that cross the boundary unchanged or not at all.
std::vector<TextCase> textCases() {
  return {{"plain texts", u"plain", u"<doc/>"},
          {"an empty document", u"empty", u"", false},
          {"1 MiB of document", u"large", megabyte()},
          {"lone surrogates", u"lone\xD800-\xDC00", u"<doc>\xDBFF \xDC01</doc>"},
          {"U+0000 inside", std::u16string(u"zero\0zero", 9), std::u16string(u"<doc>\0</doc>", 12)},
          {"spaces in the name", u"with  two spaces ", u"<doc> </doc>"}};
}

} // namespace

std::vector<Requirement> registryRequirements() {
  std::vector<Requirement> rows = {
      {"adapter",
       "answers",
       "ISRAdapter.getInstance answers the registry's adapter",
       {},
       false,
       [](Probe& p) {
         if (p.run().adapter == nullptr) {
           throw Evidence{Verdict::fail, "ISRAdapter.getInstance()", p.run().startFailure,
                          "the registry's one ISRAdapter, not null, raising nothing"};
         }
       }},
      {"btd answers",
       "answers",
       "createBTD, updateBTD and getBTD answer the URI (BTDDocument.getUri), getBTD the content (getContent)",
       {},
       true,
       [](Probe& p) {
         const KorWstring name = p.name(u"btd");
         createBTD(p, name, btdContent);
         getBTD(p, name);
         createBTD(p, name, btdContent, true);
       }},
      {"btd listing",
       "answers",
       "getBTDs answers an array (never null) of every BTD, no element null, each answering getUri and "
       "getName",
       {"btd answers"},
       true,
       [](Probe& p) {
         const KorWstring name = p.name(u"listed");
         KorWstring uri = createBTD(p, name, btdContent);
         expectListedOnce(p, listBTDs(p), uri, "URIs");
         expectListedOnce(p, getBTDNames(p), name, "names");
       }},
      {"policy answers",
       "answers",
       "createPolicy, updatePolicy and getPolicy answer the URI (ISRPolicy.getUri), getPolicy the document",
       {},
       true,
       [](Probe& p) {
         const KorWstring type = text(u"Security");
         const KorWstring name = p.name(u"policy");
         storePolicy(p, type, name, policyDocument);
         getPolicy(p, type, name);
         storePolicy(p, type, name, policyDocument, true);
       }},
      {"policy names",
       "answers",
       "getPolicyNames answers a text and getPoliciesWithoutDoc an array whose elements answer getName",
       {"policy answers"},
       true,
       [](Probe& p) {
         const KorWstring type = p.name(u"type");
         Texts none = getPolicyNames(p, type);
         p.expect(none.empty(), std::to_string(none.size()) + " names", "no names for a type never used");
         const KorWstring name = p.name(u"policy");
         storePolicy(p, type, name, policyDocument);
         expectListedOnce(p, getPolicyNames(p, type), name, "names");
       }},
      {"service answers",
       "answers",
       "getService answers the service, or null when there is none; getServicesWithoutDoc an array",
       {},
       true,
       [](Probe& p) {
         const KorWstring name = p.name(u"service");
         p.expect(!getService(p, name), shown(getService(p, name)), "false: no such service");
         serviceRoundTrip(p, name, text(u"urn:check"), text(u"<service/>"));
       }},
      {"reserved type",
       "round trips",
       "a policy of type \"BusinessTransactionDefinition\" is stored, read, listed and deleted as a BTD",
       {"btd answers", "btd listing"},
       true,
       [](Probe& p) {
         const KorWstring name = p.name(u"btd");
         KorWstring uri = storePolicy(p, reservedType, name, btdContent);
         p.expect(btdExists(p, name), "false", "true: the policy was stored as a BTD");
         expectStored(p, getBTD(p, name), btdContent, uri);
         expectStored(p, getPolicy(p, reservedType, name), btdContent, uri);
         expectListedOnce(p, getPolicyNames(p, reservedType), name, "names");
         p.call("deletePolicy", {reservedType, name}, [&] { p.registry().deletePolicy(reservedType, name); });
         p.expect(!btdExists(p, name), "true", "false: the BTD was just deleted");
       }},
  };
  for (const TextCase& texts : textCases()) {
    rows.push_back({std::string("btd ") + texts.label,
                    "round trips",
                    std::string("a BTD reads back as stored, changed and gone: ") + texts.label,
                    {"btd answers", "btd listing"},
                    true,
                    [texts](Probe& p) {
                      btdRoundTrip(p, p.name(texts.name), KorWstringText::fromUtf16(texts.document));
                    }});
  }
  for (const TextCase& texts : textCases()) {
    if (!texts.policyDocument) {
      continue;
    }
    rows.push_back({std::string("policy ") + texts.label,
                    "round trips",
                    std::string("a policy reads back as stored, changed and gone: ") + texts.label,
                    {"policy answers", "policy names"},
                    true,
                    [texts](Probe& p) {
                      policyRoundTrip(p, text(u"Security"), p.name(texts.name),
                                      KorWstringText::fromUtf16(texts.document));
                    }});
  }
  rows.push_back({"policy types",
                  "round trips",
                  "policies of several types, the reserved one in other letter case among them, stay apart",
                  {"policy answers", "policy names"},
                  true,
                  [](Probe& p) {
                    const KorWstring name = p.name(u"typed");
                    for (const char16_t* type : policyTypes) {
                      storePolicy(p, text(type), name, policyDocument + type);
                    }
                    for (const char16_t* type : policyTypes) {
                      expectListedOnce(p, getPolicyNames(p, text(type)), name, "names");
                      policyRoundTrip(p, text(type), p.name(type), policyDocument + type);
                      Stored read = getPolicy(p, text(type), name);
                      p.expect(read.document == policyDocument + type, "the document " + shown(read.document),
                               "the document stored under this type, " + shown(policyDocument + type));
                    }
                  }});
  for (const TextCase& texts : textCases()) {
    rows.push_back({std::string("service ") + texts.label,
                    "round trips",
                    std::string("a service reads back as stored and gone: ") + texts.label,
                    {"service answers"},
                    true,
                    [texts](Probe& p) {
                      serviceRoundTrip(p, p.name(texts.name), KorWstringText::fromUtf16(u"urn:" + texts.name),
                                       KorWstringText::fromUtf16(texts.document));
                    }});
  }
  std::vector<Requirement> more = {
      {"missing btd",
       "failures",
       "getBTD and updateBTD of a missing BTD raise an LxRecoverableException; deleteBTD raises one or "
       "ignores it",
       {},
       true,
       missingBTD},
      {"known exception",
       "failures",
       "a known exception carries a message number, a trace text and inserts the broker can show",
       {"missing btd"},
       true,
       knownException},
      {"existing btd",
       "failures",
       "createBTD of a BTD that exists replaces it or raises an LxRecoverableException",
       {"btd answers"},
       true,
       existingBTD},
      {"missing policy",
       "failures",
       "getPolicy and updatePolicy of a missing policy raise an LxRecoverableException; deletePolicy raises "
       "one or ignores it",
       {},
       true,
       missingPolicy},
      {"existing policy",
       "failures",
       "createPolicy of a policy that exists replaces it or raises an LxRecoverableException",
       {"policy answers"},
       true,
       existingPolicy},
      {"missing service",
       "failures",
       "deleteService of a missing service raises an LxRecoverableException or ignores it",
       {},
       true,
       missingService},
      {"threads",
       "concurrency",
       "8 threads storing, reading, listing and deleting BTDs of their own lose nothing and see all of "
       "theirs",
       {"btd answers", "btd listing"},
       true,
       concurrency},
      {"visibility",
       "concurrency",
       "a BTD created, updated or deleted on one thread reads so on another as soon as the call returns, "
       "both "
       "ways, 4 pairs of threads at once",
       {"btd answers"},
       true,
       visibility},
      {"nothing pending",
       "hygiene",
       "no Java exception is left pending after any call of the run",
       {},
       true,
       nothingPending},
      {"nothing left",
       "hygiene",
       "what the checks deleted is gone from every listing",
       {"btd listing", "policy names", "service answers", "threads", "visibility"},
       true,
       nothingLeft},
      {"global references",
       "hygiene",
       "the library's global references balance over the run",
       {},
       true,
       globalReferencesBalanced},
  };
  rows.insert(rows.end(), more.begin(), more.end());
  return rows;
}
