#include "Output.hpp"
#include <KorWstringText.hpp>

#include "CommandLine.hpp"

#include <algorithm>

namespace {

std::string text(const KorWstring& value) {
  return quote(KorWstringText::view(value));
}

std::string service(const KorISRService& value) {
  std::string line = text(value.name) + " in namespace " + text(value.serviceNamespace);
  return value.document.empty() ? line : line + ", document " + text(value.document);
}

// A value on one line, or a count with one indented line per item.
void writeValue(std::ostream& out, const Value& value, const std::string& indent) {
  if (auto* flag = std::get_if<bool>(&value)) {
    out << (*flag ? "true" : "false") << '\n';
  } else if (auto* single = std::get_if<KorWstring>(&value)) {
    out << text(*single) << '\n';
  } else if (auto* record = std::get_if<KorISRService>(&value)) {
    out << service(*record) << '\n';
  } else if (auto* script = std::get_if<Script>(&value)) {
    auto lines = std::count(script->text.begin(), script->text.end(), '\n');
    out << lines << (lines == 1 ? " line of script\n" : " lines of script\n") << script->text;
  } else if (auto* list = std::get_if<std::vector<KorWstring>>(&value)) {
    out << list->size() << (list->size() == 1 ? " text\n" : " texts\n");
    for (const KorWstring& item : *list) {
      out << indent << "  " << text(item) << '\n';
    }
  } else {
    const auto& services = std::get<std::vector<KorISRService>>(value);
    out << services.size() << (services.size() == 1 ? " service\n" : " services\n");
    for (const KorISRService& item : services) {
      out << indent << "  " << service(item) << '\n';
    }
  }
}

void writeException(std::ostream& out, const KorException& error, const std::string& indent) {
  out << indent << (error.isFatal() ? "fatal " : "recoverable ") << error.what() << '\n';
  out << indent << "  number " << error.messageNumber() << ", raised by " << error.function() << '\n';
  int position = 0;
  for (const KorExceptionInsert& insert : error.inserts()) {
    out << indent << "  insert " << ++position << ": ";
    if (insert.isNested()) {
      out << "nested exception\n";
      writeException(out, insert.nested(), indent + "    ");
    } else {
      out << text(insert.text()) << '\n';
    }
  }
}

class TextOutput : public Output {
public:
  TextOutput(std::ostream& out, std::ostream& errors) : out_(out), errors_(errors) {}

  void write(const Report& report) override {
    if (auto* usage = std::get_if<UsageError>(&report.failure)) {
      out_ << std::flush;
      errors_ << "legiorrug: line " << report.line << ": " << usage->message << std::endl;
      return;
    }
    out_ << report.line << (report.op ? " " + *report.op : std::string()) << ": ";
    if (report.outcome.result) {
      writeValue(out_, *report.outcome.result, "");
    } else {
      out_ << (report.ok() ? "done\n" : "failed\n");
    }
    if (auto* raised = std::get_if<std::shared_ptr<const KorException>>(&report.failure)) {
      writeException(out_, **raised, "  ");
    } else if (auto* internal = std::get_if<InternalError>(&report.failure)) {
      out_ << "  " << internal->message << '\n';
    }
    for (const auto& [name, value] : report.outcome.out) {
      out_ << "  " << name << " = ";
      writeValue(out_, value, "  ");
    }
    out_ << std::flush;
  }

private:
  std::ostream& out_;
  std::ostream& errors_;
};

} // namespace

std::unique_ptr<Output> makeTextOutput(std::ostream& out, std::ostream& errors) {
  return std::make_unique<TextOutput>(out, errors);
}
