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

void require(bool condition) {
  if (!condition) {
    std::abort();
  }
}

// Few keys, so that operations meet each other's records; among them the
// empty text, a space, a lone surrogate and the order's edge units.
const std::u16string keys[] = {
    u"",       u"a",      u"ab",   u"B",          u"a b",
    u"\xD800", u"\xFFFF", u"\x7F", u"\U0001F600", u"BusinessTransactionDefinition"};
const std::size_t keyCount = sizeof keys / sizeof keys[0];

struct Record {
  std::u16string text; // content or document
  std::u16string uri;
};

struct Model {
  std::map<std::u16string, Record> btds;
  std::map<std::u16string, std::map<std::u16string, Record>> policies;
};

const std::uint32_t btdMissing = 0xC0000840;
const std::uint32_t noSuchOrPresent = 0xC0000841;

class Input {
public:
  Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
  bool more() const { return at_ < size_; }
  std::uint8_t byte() { return at_ < size_ ? data_[at_++] : 0; }
  const std::u16string& key() { return keys[byte() % keyCount]; }
  // A text of up to 7 units drawn from the input.
  std::u16string text() {
    std::u16string result(byte() % 8, u'\0');
    for (auto& unit : result) {
      unit = static_cast<char16_t>(byte() << 8 | byte());
    }
    return result;
  }

private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t at_ = 0;
};

KorWstring k(const std::u16string& units) {
  return KorWstring(units);
}

// Runs op, which must raise a KorRecoverableException with number when
// fails, and nothing otherwise.
template <typename Op> void expect(bool fails, std::uint32_t number, Op&& op) {
  try {
    op();
    require(!fails);
  } catch (const KorRecoverableException& error) {
    require(fails && error.messageNumber() == number);
  }
}

std::u16string joined(const std::u16string& start, const std::vector<std::u16string>& names) {
  std::u16string result = start;
  for (const auto& name : names) {
    result += (result.empty() ? u"" : u" ") + name;
  }
  return result;
}

std::vector<std::u16string> views(const std::vector<KorWstring>& texts) {
  std::vector<std::u16string> result;
  for (const auto& text : texts) {
    result.emplace_back(text.view());
  }
  return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  KorISRAdapterStub stub;
  Model model;
  Input in(data, size);
  while (in.more()) {
    const std::uint8_t code = in.byte();
    const std::u16string name = in.key();
    const std::u16string type = in.key();
    const std::u16string text = in.text();
    const std::u16string proposed = code & 0x80 ? in.text() : std::u16string();
    const std::u16string before = u"before";
    KorWstring uri(proposed);
    KorWstring out(before);
    const bool btd = model.btds.count(name) != 0;
    const auto ofType = model.policies.find(type);
    const bool policy = ofType != model.policies.end() && ofType->second.count(name) != 0;
    switch (code % 14) {
    case 0: {
      // An upsert: a new BTD keeps a proposed URI, an existing one its own.
      stub.createBTD(k(name), k(text), uri);
      Record& stored = model.btds[name];
      if (!btd) {
        stored.uri = proposed.empty() ? u"/apiv1/business/businesstransactions/" + name : proposed;
      }
      stored.text = text;
      require(uri.view() == stored.uri);
      break;
    }
    case 1:
      expect(!btd, noSuchOrPresent, [&] { stub.updateBTD(k(name), k(text), uri); });
      if (btd) {
        model.btds[name].text = text;
        require(uri.view() == model.btds[name].uri);
      } else {
        require(uri.view() == proposed);
      }
      break;
    case 2:
      expect(!btd, btdMissing, [&] { stub.getBTD(k(name), out, uri); });
      require(out.view() == (btd ? model.btds[name].text : before));
      require(uri.view() == (btd ? model.btds[name].uri : proposed));
      break;
    case 3:
      expect(!btd, btdMissing, [&] { stub.deleteBTD(k(name)); });
      model.btds.erase(name);
      break;
    case 4:
      require(stub.btdExists(k(name)) == btd);
      break;
    case 5: {
      std::vector<KorWstring> uris{k(before)};
      stub.listBTDs(uris);
      std::vector<std::u16string> expected{before};
      for (const auto& entry : model.btds) {
        expected.push_back(entry.second.uri);
      }
      require(views(uris) == expected);
      break;
    }
    case 6: {
      std::vector<std::u16string> expected;
      for (const auto& entry : model.btds) {
        expected.push_back(entry.first);
      }
      require(views(stub.getBTDNames(out)) == expected);
      require(out.view() == joined(u"", expected));
      break;
    }
    case 7:
      expect(policy, noSuchOrPresent, [&] { stub.createPolicy(k(type), k(name), k(text), uri); });
      if (!policy) {
        const std::u16string stored = proposed.empty() ? u"/apiv1/policy/" + type + u"/" + name : proposed;
        model.policies[type][name] = Record{text, stored};
        require(uri.view() == stored);
      }
      break;
    case 8:
      expect(!policy, noSuchOrPresent, [&] { stub.updatePolicy(k(type), k(name), k(text), uri); });
      if (policy) {
        model.policies[type][name].text = text;
        require(uri.view() == model.policies[type][name].uri);
      }
      break;
    case 9:
      expect(!policy, noSuchOrPresent, [&] { stub.getPolicy(k(type), k(name), out, uri); });
      require(out.view() == (policy ? model.policies[type][name].text : before));
      require(uri.view() == (policy ? model.policies[type][name].uri : proposed));
      break;
    case 10:
      expect(!policy, noSuchOrPresent, [&] { stub.deletePolicy(k(type), k(name)); });
      if (policy) {
        ofType->second.erase(name);
      }
      break;
    case 11:
      require(stub.policyExists(k(type), k(name)) == policy);
      break;
    case 12: {
      // Appends to the names it is given, unlike getBTDNames.
      std::vector<std::u16string> expected;
      if (ofType != model.policies.end()) {
        for (const auto& entry : ofType->second) {
          expected.push_back(entry.first);
        }
      }
      KorWstring names(proposed);
      require(views(stub.getPolicyNames(k(type), names)) == expected);
      require(names.view() == joined(proposed, expected));
      break;
    }
    default:
      stub.reset();
      model = Model();
      break;
    }
  }
  return 0;
}
