// The in-memory registry driven by a byte-coded sequence of operations and
// checked, answer by answer, against a model of its two stores.
#include <KorException.hpp>
#include <KorISRAdapterStub.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace {

using Text = std::u16string;

void require(bool condition) {
  if (!condition) {
    std::abort();
  }
}

// Few keys, so that operations meet each other's records; among them the
// empty text, a space, a lone surrogate and the order's edge units.
const Text keys[] = {u"",       u"a",      u"ab",   u"B",          u"a b",
                     u"\xD800", u"\xFFFF", u"\x7F", u"\U0001F600", u"BusinessTransactionDefinition"};

struct Record {
  Text text; // content or document
  Text uri;
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
  auto entry = store.begin();
  for (const KorWstring& name : listed) {
    require(entry != store.end() && name.view() == entry->first);
    start += (start.empty() ? u"" : u" ") + (entry++)->first;
  }
  require(entry == store.end());
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
    const Text name = keys[byte() % 10];
    const Text type = keys[byte() % 10];
    const Text content = text();
    const Text proposed = code & 0x80 ? text() : Text();
    KorWstring uri(proposed);
    KorWstring out(u"before");
    const bool btd = btds.count(name) != 0;
    auto& ofType = policies[type];
    const bool policy = ofType.count(name) != 0;
    switch (code % 14) {
    case 0: // An upsert: a new BTD keeps a proposed URI, an existing one its own.
      stub.createBTD(KorWstring(name), KorWstring(content), uri);
      if (!btd) {
        btds[name].uri = proposed.empty() ? u"/apiv1/business/businesstransactions/" + name : proposed;
      }
      btds[name].text = content;
      require(uri.view() == btds[name].uri);
      break;
    case 1:
    case 8: {
      const bool found = code % 14 == 1 ? btd : policy;
      expect(!found, 0xC0000841, [&] {
        code % 14 == 1 ? stub.updateBTD(KorWstring(name), KorWstring(content), uri)
                       : stub.updatePolicy(KorWstring(type), KorWstring(name), KorWstring(content), uri);
      });
      Record* changed = code % 14 == 1 ? (btd ? &btds[name] : nullptr) : (policy ? &ofType[name] : nullptr);
      if (changed != nullptr) {
        changed->text = content;
      }
      require(uri.view() == (changed != nullptr ? changed->uri : proposed));
      break;
    }
    case 2:
      expect(!btd, 0xC0000840, [&] { stub.getBTD(KorWstring(name), out, uri); });
      require(out.view() == (btd ? btds[name].text : u"before") &&
              uri.view() == (btd ? btds[name].uri : proposed));
      break;
    case 3:
      expect(!btd, 0xC0000840, [&] { stub.deleteBTD(KorWstring(name)); });
      btds.erase(name);
      break;
    case 4:
      require(stub.btdExists(KorWstring(name)) == btd &&
              stub.policyExists(KorWstring(type), KorWstring(name)) == policy);
      break;
    case 5: {
      std::vector<KorWstring> uris{out};
      stub.listBTDs(uris);
      require(uris.size() == btds.size() + 1);
      std::size_t i = 1;
      for (const auto& entry : btds) {
        require(uris[i++].view() == entry.second.uri);
      }
      break;
    }
    case 6:
      require(names(btds, u"", stub.getBTDNames(out)) == out.view());
      break;
    case 7:
      expect(policy, 0xC0000841,
             [&] { stub.createPolicy(KorWstring(type), KorWstring(name), KorWstring(content), uri); });
      if (!policy) {
        ofType[name] = Record{content, proposed.empty() ? u"/apiv1/policy/" + type + u"/" + name : proposed};
      }
      require(uri.view() == (policy ? proposed : ofType[name].uri));
      break;
    case 9:
      expect(!policy, 0xC0000841, [&] { stub.getPolicy(KorWstring(type), KorWstring(name), out, uri); });
      require(out.view() == (policy ? ofType[name].text : u"before") &&
              uri.view() == (policy ? ofType[name].uri : proposed));
      break;
    case 10:
      expect(!policy, 0xC0000841, [&] { stub.deletePolicy(KorWstring(type), KorWstring(name)); });
      ofType.erase(name);
      break;
    case 12: { // Appends to the names it is given, unlike getBTDNames.
      KorWstring joined(proposed);
      require(names(ofType, proposed, stub.getPolicyNames(KorWstring(type), joined)) == joined.view());
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
