#include "Dump.hpp"

#include "CommandLine.hpp"

#include <KorISRService.hpp>
#include <KorWstringText.hpp>

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
  for (const KorWstring& type : policyTypes) {
    for (const KorWstring& name : adapter.getPolicyNames(type, joined)) {
      KorWstring document;
      KorWstring uri;
      adapter.getPolicy(type, name, document, uri);
      script += line("createPolicy", {&type, &name, &document, &uri});
    }
  }
  return script;
}
