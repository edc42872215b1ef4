#pragma once

#include "KorLog.hpp"
#include "KorWstring.hpp"

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

class KorException;

// An insert of an exception: a text, or a whole nested exception item.
class KorExceptionInsert {
public:
  explicit KorExceptionInsert(KorWstring text) : text_(std::move(text)) {}
  // NOLINTNEXTLINE(bugprone-throw-keyword-missing): the nested item is kept, not raised.
  explicit KorExceptionInsert(std::shared_ptr<const KorException> nested) : nested_(std::move(nested)) {}

  bool isNested() const noexcept { return nested_ != nullptr; }
  const KorWstring& text() const noexcept { return text_; }
  const KorException& nested() const noexcept { return *nested_; }

private:
  KorWstring text_;
  std::shared_ptr<const KorException> nested_;
};

// Base of the platform's two exception types. Message numbers of the form
// 0xC0000000 + n are the platform's DRXnnnn messages; any other number is a
// Java component's own.
class KorException : public std::exception {
public:
  KorException(const char* sourceFile, int sourceLine, const char* function, const wchar_t* traceSource,
               std::uint32_t messageNumber, KorLogToken token);

  KorException& operator<<(const char* utf8);
  KorException& operator<<(const KorWstring& text);
  KorException& operator<<(const KorException& nested);
  // For a translation that learns the number only after building the error.
  void setMessageNumber(std::uint32_t messageNumber);

  [[noreturn]] virtual void throwThis() const = 0;
  virtual bool isFatal() const noexcept = 0;
  virtual std::shared_ptr<const KorException> clone() const = 0;

  const std::string& sourceFile() const noexcept { return sourceFile_; }
  int sourceLine() const noexcept { return sourceLine_; }
  const std::string& function() const noexcept { return function_; }
  const KorWstring& traceSource() const noexcept { return traceSource_; }
  std::uint32_t messageNumber() const noexcept { return messageNumber_; }
  KorLogToken token() const noexcept { return token_; }
  const std::vector<KorExceptionInsert>& inserts() const noexcept { return inserts_; }
  // The text inserts only, in order.
  std::vector<KorWstring> textInserts() const;

  // "DRX2112" for the platform's messages, empty for any other number.
  std::string messageId() const;
  // "DRX2112: <first text insert>", or "3001: <first text insert>".
  const char* what() const noexcept override;

private:
  void renderWhat();

  std::string sourceFile_;
  int sourceLine_;
  std::string function_;
  KorWstring traceSource_;
  std::uint32_t messageNumber_;
  KorLogToken token_;
  std::vector<KorExceptionInsert> inserts_;
  std::string what_;
};

class KorRecoverableException : public KorException {
public:
  using KorException::KorException;
  [[noreturn]] void throwThis() const override { throw *this; }
  bool isFatal() const noexcept override { return false; }
  std::shared_ptr<const KorException> clone() const override;
};

class KorFatalException : public KorException {
public:
  using KorException::KorException;
  [[noreturn]] void throwThis() const override { throw *this; }
  bool isFatal() const noexcept override { return true; }
  std::shared_ptr<const KorException> clone() const override;
};

// 0xC0000000 + the DRX number.
constexpr std::uint32_t korMessageNumber(unsigned drx) noexcept {
  return 0xC0000000U + drx;
}
