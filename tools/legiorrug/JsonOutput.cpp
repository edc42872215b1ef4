#include "Output.hpp"
#include <KorWstringText.hpp>

#include "Utf.hpp"

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

// Texts go into the document as WTF-8, which nlohmann's own dump rejects, so
// the document is written here: a lone surrogate becomes a \u escape, and so
// does every control, so that one record is one line to any reader.
void writeString(std::ostream& out, const std::string& wtf8) {
  std::string escaped = "\"";
  for (std::size_t i = 0; i < wtf8.size();) {
    std::size_t start = i;
    char32_t codePoint = nextCodePoint(wtf8, i);
    if (codePoint == '"' || codePoint == '\\') {
      escaped += '\\';
      escaped += static_cast<char>(codePoint);
    } else if (codePoint == '\n') {
      escaped += "\\n";
    } else if (codePoint == '\r') {
      escaped += "\\r";
    } else if (codePoint == '\t') {
      escaped += "\\t";
    } else if (isControl(codePoint) || (codePoint >= 0xD800 && codePoint <= 0xDFFF)) {
      appendEscape(escaped, codePoint);
    } else {
      escaped.append(wtf8, start, i - start);
    }
  }
  out << escaped << '"';
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
    Json operator()(const Script& script) const { return script.text; }
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
