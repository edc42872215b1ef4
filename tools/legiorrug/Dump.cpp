#include "Dump.hpp"

#include "CommandLine.hpp"

#include <KorISRAdapterStub.hpp>
#include <KorISRService.hpp>
#include <KorWstringText.hpp>

#include <iostream>
#include <set>

namespace {

// Each piece quotes to at most six bytes a unit, well within a line.
constexpr std::size_t pieceUnits = 65536;

// The text as one word, in "..." pieces that each end their line with a
// backslash but the last. A piece may end inside a surrogate pair: its
// halves are escaped and the word holds the same units.
std::string word(const KorWstring& text) {
  std::u16string_view units = KorWstringText::view(text);
  std::string out = quote(units.substr(0, pieceUnits));
  for (std::size_t start = pieceUnits; start < units.size(); start += pieceUnits) {
    out += "\\\n" + quote(units.substr(start, pieceUnits));
  }
  return out;
}

std::string line(const std::string& command, std::initializer_list<const KorWstring*> texts) {
  std::string out = command;
  for (const KorWstring* text : texts) {
    out += ' ' + word(*text);
  }
  return out + '\n';
}

} // namespace

std::string dumpRegistry(KorISRAdapter& adapter, const std::vector<KorWstring>& policyTypes) {
  std::string script = "# A registry dumped by legiorrug; run it on an empty registry to rebuild it.\n";
  const bool inMemory = dynamic_cast<KorISRAdapterStub*>(&adapter) != nullptr;
  std::vector<std::string> lacks;
  if (policyTypes.empty()) {
    lacks.emplace_back("no policies: dump names no policy type, and the registry cannot list them");
  }
  if (inMemory) {
    lacks.emplace_back("no services: the in-memory registry keeps none");
  }
  for (const std::string& lack : lacks) {
    script += "# It holds " + lack + ".\n";
    std::cerr << "legiorrug: the dump holds " << lack << '\n';
  }
  KorWstring joined;
  for (const KorWstring& name : adapter.getBTDNames(joined)) {
    KorWstring content;
    KorWstring uri;
    adapter.getBTD(name, content, uri);
    script += line("createBTD", {&name, &content, &uri});
  }
  for (const KorISRService& listed : adapter.getServices()) {
    KorISRService service;
    adapter.getService(listed.name, service);
    script += line("createService", {&service.name, &service.serviceNamespace, &service.document});
  }
  // The Java registry keeps the reserved type's policies as its BTDs, which
  // are dumped once already.
  const KorWstring reserved = KorWstringText::fromUtf16(u"BusinessTransactionDefinition");
  std::set<KorWstring> dumped;
  for (const KorWstring& type : policyTypes) {
    if ((!inMemory && type == reserved) || !dumped.insert(type).second) {
      continue;
    }
    for (const KorWstring& name : adapter.getPolicyNames(type, joined)) {
      KorWstring document;
      KorWstring uri;
      adapter.getPolicy(type, name, document, uri);
      script += line("createPolicy", {&type, &name, &document, &uri});
    }
  }
  return script;
}
