#include "Output.hpp"
#include <KorWstringText.hpp>

#include "Utf.hpp"

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

// Texts go into the document as WTF-8, which nlohmann's own dump rejects, so
// the document is written here: a lone surrogate becomes a \u escape.
void writeString(std::ostream& out, const std::string& wtf8) {
  static const char hex[] = "0123456789abcdef";
  out << '"';
  for (std::size_t i = 0; i < wtf8.size(); ++i) {
    auto byte = static_cast<unsigned char>(wtf8[i]);
    bool surrogate =
        byte == 0xED && i + 2 < wtf8.size() && (static_cast<unsigned char>(wtf8[i + 1]) & 0xE0) == 0xA0;
    unsigned escaped = 0;
    if (surrogate) {
      escaped = 0xD000 | (static_cast<unsigned char>(wtf8[i + 1]) & 0x3F) << 6 |
                (static_cast<unsigned char>(wtf8[i + 2]) & 0x3F);
      i += 2;
    } else if (byte == '"' || byte == '\\') {
      out << '\\' << static_cast<char>(byte);
      continue;
    } else if (byte == '\n') {
      out << "\\n";
      continue;
    } else if (byte == '\r') {
      out << "\\r";
      continue;
    } else if (byte == '\t') {
      out << "\\t";
      continue;
    } else if (byte >= 0x20) {
      out << static_cast<char>(byte);
      continue;
    } else {
      escaped = byte;
    }
    out << "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) {
      out << hex[(escaped >> shift) & 0xF];
    }
  }
  out << '"';
}

void writeJson(std::ostream& out, const Json& value) {
  if (value.is_string()) {
    writeString(out, value.get_ref<const std::string&>());
  } else if (value.is_array()) {
    out << '[';
    const char* separator = "";
    for (const Json& item : value) {
      out << separator;
      writeJson(out, item);
      separator = ",";
    }
    out << ']';
  } else if (value.is_object()) {
    out << '{';
    const char* separator = "";
    for (const auto& [key, item] : value.items()) {
      out << separator;
      writeString(out, key);
      out << ':';
      writeJson(out, item);
      separator = ",";
    }
    out << '}';
  } else {
    out << value.dump();
  }
}

Json text(const KorWstring& value) {
  return toWtf8(KorWstringText::view(value));
}

Json texts(const std::vector<KorWstring>& values) {
  Json array = Json::array();
  for (const KorWstring& value : values) {
    array.push_back(text(value));
  }
  return array;
}

Json service(const KorISRService& value) {
  return {{"name", text(value.name)},
          {"namespace", text(value.serviceNamespace)},
          {"document", text(value.document)}};
}

Json toJson(const Value& value) {
  struct {
    Json operator()(bool flag) const { return flag; }
    Json operator()(const KorWstring& value) const { return text(value); }
    Json operator()(const std::vector<KorWstring>& values) const { return texts(values); }
    Json operator()(const KorISRService& value) const { return service(value); }
    Json operator()(const std::vector<KorISRService>& values) const {
      Json array = Json::array();
      for (const KorISRService& value : values) {
        array.push_back(service(value));
      }
      return array;
    }
  } visitor;
  return std::visit(visitor, value);
}

Json exception(const KorException& error) {
  Json inserts = Json::array();
  for (const KorExceptionInsert& insert : error.inserts()) {
    inserts.push_back(insert.isNested() ? exception(insert.nested()) : text(insert.text()));
  }
  std::string id = error.messageId();
  return {{"type", error.isFatal() ? "fatal" : "recoverable"},
          {"number", error.messageNumber()},
          {"message", id.empty() ? Json() : Json(id)},
          {"function", error.function()},
          {"inserts", std::move(inserts)},
          {"text", error.what()}};
}

class JsonOutput : public Output {
public:
  explicit JsonOutput(std::ostream& out) : out_(out) {}

  void write(const Report& report) override {
    Json line = {{"line", report.line}, {"op", report.op ? Json(*report.op) : Json()}, {"ok", report.ok()}};
    if (auto* usage = std::get_if<UsageError>(&report.failure)) {
      line["error"] = {{"type", "usage"}, {"text", usage->message}};
    } else {
      if (report.outcome.result) {
        line["result"] = toJson(*report.outcome.result);
      }
      line["out"] = Json::object();
      for (const auto& [name, value] : report.outcome.out) {
        line["out"][name] = toJson(value);
      }
      if (auto* raised = std::get_if<std::shared_ptr<const KorException>>(&report.failure)) {
        line["error"] = exception(**raised);
      } else if (auto* internal = std::get_if<InternalError>(&report.failure)) {
        line["error"] = {{"type", "internal"}, {"text", internal->message}};
      }
    }
    writeJson(out_, line);
    out_ << '\n' << std::flush;
  }

private:
  std::ostream& out_;
};

} // namespace

std::unique_ptr<Output> makeJsonOutput(std::ostream& out) {
  return std::make_unique<JsonOutput>(out);
}
