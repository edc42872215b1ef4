// The in-memory registry driven by a byte-coded sequence of operations and
// checked, answer by answer, against a model of its two stores.
#include <KorException.hpp>
#include <KorISRAdapterStub.hpp>
#include <KorWstringText.hpp>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace {

using Text = std::u16string;

const auto require = [](bool holds) { holds ? void() : std::abort(); };

// Few keys, so that operations meet each other's records; among them the
// empty text, a space, a lone surrogate and the order's edge units.
const Text keys[] = {u"",       u"a",      u"ab",   u"B",          u"a b",
                     u"\xD800", u"\xFFFF", u"\x7F", u"\U0001F600", u"BusinessTransactionDefinition"};

struct Record {
  Text text, uri; // text: the content or document
};

// Runs op, which must raise a KorRecoverableException with number when fails, and nothing otherwise.
template <typename Op> void expect(bool fails, std::uint32_t number, Op&& op) {
  try {
    op();
    require(!fails);
  } catch (const KorRecoverableException& error) {
    require(fails && error.messageNumber() == number);
  }
}

// The names of a store in order, joined onto start by single spaces.
template <typename Store> Text names(const Store& store, Text start, std::vector<KorWstring> listed) {
  require(listed.size() == store.size());
  auto entry = store.begin();
  for (const KorWstring& name : listed) {
    require(KorWstringText::view(name) == entry->first);
    start += (start.empty() ? u"" : u" ") + (entry++)->first;
  }
  return start;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  KorISRAdapterStub stub;
  std::map<Text, Record> btds;
  std::map<Text, std::map<Text, Record>> policies;
  std::size_t at = 0;
  auto byte = [&] { return at < size ? data[at++] : std::uint8_t{0}; };
  auto text = [&] {
    Text result(byte() % 8, u'\0');
    for (auto& unit : result) {
      unit = static_cast<char16_t>(byte() << 8 | byte());
    }
    return result;
  };
  while (at < size) {
    const std::uint8_t code = byte();
    const Text name = keys[byte() % 10], type = keys[byte() % 10], content = text();
    const Text proposed = code & 0x80 ? text() : Text();
    const KorWstring n = KorWstringText::fromUtf16(name), t = KorWstringText::fromUtf16(type),
                     c = KorWstringText::fromUtf16(content);
    KorWstring uri = KorWstringText::fromUtf16(proposed), out = KorWstringText::fromUtf16(u"before");
    auto& ofType = policies[type];
    Record* btd = btds.count(name) != 0 ? &btds[name] : nullptr;
    Record* policy = ofType.count(name) != 0 ? &ofType[name] : nullptr;
    // Operations 0 to 3 on BTDs and 7 to 10 on policies are alike.
    const bool ofBtd = code % 14 < 7;
    Record* record = ofBtd ? btd : policy;
    const std::uint32_t missing = ofBtd ? 0xC0000840 : 0xC0000841;
    const Text made = !proposed.empty() ? proposed // the URI of a new record
                      : ofBtd           ? u"/apiv1/business/businesstransactions/" + name
                                        : u"/apiv1/policy/" + type + u"/" + name;
    switch (code % 14) {
    case 0: // An upsert: a new BTD keeps a proposed URI, an existing one its own.
      stub.createBTD(n, c, uri);
      record = &btds.try_emplace(name, Record{{}, made}).first->second;
      record->text = content;
      require(KorWstringText::view(uri) == record->uri);
      break;
    case 7: {
      const bool added = ofType.try_emplace(name, Record{content, made}).second;
      expect(!added, 0xC0000841, [&] { stub.createPolicy(t, n, c, uri); });
      require(KorWstringText::view(uri) == (added ? made : proposed));
      break;
    }
    case 1:
    case 8:
      expect(record == nullptr, 0xC0000841,
             [&] { ofBtd ? stub.updateBTD(n, c, uri) : stub.updatePolicy(t, n, c, uri); });
      if (record != nullptr) {
        record->text = content;
      }
      require(KorWstringText::view(uri) == (record != nullptr ? record->uri : proposed));
      break;
    case 2:
    case 9:
      expect(record == nullptr, missing,
             [&] { ofBtd ? stub.getBTD(n, out, uri) : stub.getPolicy(t, n, out, uri); });
      require(KorWstringText::view(out) == (record != nullptr ? record->text : u"before") &&
              KorWstringText::view(uri) == (record != nullptr ? record->uri : proposed));
      break;
    case 3:
    case 10:
      expect(record == nullptr, missing, [&] { ofBtd ? stub.deleteBTD(n) : stub.deletePolicy(t, n); });
      ofBtd ? btds.erase(name) : ofType.erase(name);
      break;
    case 4:
      require(stub.btdExists(n) == (btd != nullptr) && stub.policyExists(t, n) == (policy != nullptr));
      break;
    case 5: { // Appends to the URIs it is given.
      std::vector<KorWstring> uris{out};
      stub.listBTDs(uris);
      require(std::equal(btds.begin(), btds.end(), uris.begin() + 1, uris.end(),
                         [](const auto& entry, const KorWstring& uri) {
                           return KorWstringText::view(uri) == entry.second.uri;
                         }));
      break;
    }
    case 6:
      require(names(btds, u"", stub.getBTDNames(out)) == KorWstringText::view(out));
      break;
    case 12: { // Appends to the names it is given, unlike getBTDNames.
      KorWstring joined = KorWstringText::fromUtf16(proposed);
      require(names(ofType, proposed, stub.getPolicyNames(t, joined)) == KorWstringText::view(joined));
      break;
    }
    default:
      stub.reset();
      btds.clear();
      policies.clear();
    }
  }
  return 0;
}
