#include "KorException.hpp"
#include "KorWstringText.hpp"

#include <cinttypes>
#include <cstdio>

namespace {

constexpr std::uint32_t drxBase = 0xC0000000U;

} // namespace

KorException::KorException(const char* sourceFile, int sourceLine, const char* function,
                           const wchar_t* traceSource, std::uint32_t messageNumber, KorLogToken token)
    : sourceFile_(sourceFile != nullptr ? sourceFile : ""), sourceLine_(sourceLine),
      function_(function != nullptr ? function : ""),
      traceSource_(traceSource != nullptr ? KorWstringConvertor::toKorWstring(traceSource) : KorWstring()),
      messageNumber_(messageNumber), token_(token) {
  renderWhat();
}

KorException& KorException::operator<<(const char* utf8) {
  return *this << KorLogInsert(utf8).text();
}

KorException& KorException::operator<<(const KorWstring& text) {
  inserts_.emplace_back(text);
  renderWhat();
  return *this;
}

void KorException::setMessageNumber(std::uint32_t messageNumber) {
  messageNumber_ = messageNumber;
  translated_ = true;
  renderWhat();
}

KorException& KorException::operator<<(const KorException& nested) {
  inserts_.emplace_back(nested.clone());
  return *this;
}

std::vector<KorWstring> KorException::textInserts() const {
  std::vector<KorWstring> texts;
  for (const KorExceptionInsert& insert : inserts_) {
    if (!insert.isNested()) {
      texts.push_back(insert.text());
    }
  }
  return texts;
}

std::string KorException::messageId() const {
  if (translated_ || (messageNumber_ & drxBase) != drxBase) {
    return {};
  }
  char id[16];
  std::snprintf(id, sizeof id, "DRX%04" PRIu32, messageNumber_ - drxBase);
  return id;
}

const char* KorException::what() const noexcept {
  return what_.c_str();
}

void KorException::renderWhat() {
  std::string rendered = messageId();
  if (rendered.empty()) {
    rendered = std::to_string(messageNumber_);
  }
  for (const KorExceptionInsert& insert : inserts_) {
    if (!insert.isNested()) {
      rendered += ": ";
      rendered += KorWstringText::toUtf8(insert.text());
      break;
    }
  }
  what_ = std::move(rendered);
}

std::shared_ptr<const KorException> KorRecoverableException::clone() const {
  return std::make_shared<KorRecoverableException>(*this);
}

std::shared_ptr<const KorException> KorFatalException::clone() const {
  return std::make_shared<KorFatalException>(*this);
}
