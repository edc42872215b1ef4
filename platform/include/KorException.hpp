#pragma once

#include "KorLog.hpp"
#include "KorWstring.hpp"

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

/// @file
/// The platform's exceptions, the only way the library reports a failure.
/// Threads: exceptions are values; a copy may be read on any thread.

class KorException;

/// An insert of an exception: a text, or a whole nested exception item.
class KorExceptionInsert {
public:
  /// A text insert.
  explicit KorExceptionInsert(KorWstring text) : text_(std::move(text)) {}
  /// A nested exception item.
  // NOLINTNEXTLINE(bugprone-throw-keyword-missing): the nested item is kept, not raised.
  explicit KorExceptionInsert(std::shared_ptr<const KorException> nested) : nested_(std::move(nested)) {}

  /// Whether the insert is a nested exception rather than a text.
  bool isNested() const noexcept { return nested_ != nullptr; }
  /// The text; empty for a nested exception.
  const KorWstring& text() const noexcept { return text_; }
  /// The nested exception; only when isNested().
  const KorException& nested() const noexcept { return *nested_; }

private:
  KorWstring text_;
  std::shared_ptr<const KorException> nested_;
};

/// Base of the platform's two exception types. Message numbers of the form
/// 0xC0000000 + n are the platform's DRXnnnn messages; any other number is a
/// Java component's own.
class KorException : public std::exception {
public:
  /// An exception with no insert yet: where it was raised (sourceFile,
  /// sourceLine, the function label function), the trace source, the message
  /// number and the token of the raising call's entry trace record.
  KorException(const char* sourceFile, int sourceLine, const char* function, const wchar_t* traceSource,
               std::uint32_t messageNumber, KorLogToken token);

  /// Appends a UTF-8 text insert.
  KorException& operator<<(const char* utf8);
  /// Appends a text insert.
  KorException& operator<<(const KorWstring& text);
  /// Appends a copy of nested as a nested exception item.
  KorException& operator<<(const KorException& nested);
  /// Replaces the message number with the one a translation learnt after
  /// building the error: the Java side's own, never named as a DRX message.
  void setMessageNumber(std::uint32_t messageNumber);

  /// Raises a copy of the exception, of its own type.
  [[noreturn]] virtual void throwThis() const = 0;
  /// Whether it is a KorFatalException.
  virtual bool isFatal() const noexcept = 0;
  /// A copy of its own type.
  virtual std::shared_ptr<const KorException> clone() const = 0;

  /// The source file that raised it.
  const std::string& sourceFile() const noexcept { return sourceFile_; }
  /// The line that raised it.
  int sourceLine() const noexcept { return sourceLine_; }
  /// The raising function's label, for example "KorISRAdapterImpl::getBTD".
  const std::string& function() const noexcept { return function_; }
  /// The name of the trace source.
  const KorWstring& traceSource() const noexcept { return traceSource_; }
  /// 0xC0000000 plus the DRX number, or a Java component's own number.
  std::uint32_t messageNumber() const noexcept { return messageNumber_; }
  /// The token of the raising call's entry trace record (0 when none).
  KorLogToken token() const noexcept { return token_; }
  /// The inserts in order: texts and nested exceptions.
  const std::vector<KorExceptionInsert>& inserts() const noexcept { return inserts_; }
  /// The text inserts only, in order.
  std::vector<KorWstring> textInserts() const;

  /// "DRX2112" for the platform's messages, empty for any other number and
  /// for a translated one.
  std::string messageId() const;
  /// "DRX2112: <first text insert>", or "3001: <first text insert>".
  const char* what() const noexcept override;

private:
  void renderWhat();

  std::string sourceFile_;
  int sourceLine_;
  std::string function_;
  KorWstring traceSource_;
  std::uint32_t messageNumber_;
  bool translated_ = false;
  KorLogToken token_;
  std::vector<KorExceptionInsert> inserts_;
  std::string what_;
};

/// A failure after which the registry and the adapter can be used again.
class KorRecoverableException : public KorException {
public:
  /// Built as a KorException.
  using KorException::KorException;
  [[noreturn]] void throwThis() const override { throw *this; }
  bool isFatal() const noexcept override { return false; }
  std::shared_ptr<const KorException> clone() const override;
};

/// A failure of the set-up (no JVM, an unresolved Java class or method, a
/// fatal Java error): the same call will fail the same way.
class KorFatalException : public KorException {
public:
  /// Built as a KorException.
  using KorException::KorException;
  [[noreturn]] void throwThis() const override { throw *this; }
  bool isFatal() const noexcept override { return true; }
  std::shared_ptr<const KorException> clone() const override;
};

/// 0xC0000000 + the DRX number.
constexpr std::uint32_t korMessageNumber(unsigned drx) noexcept {
  return 0xC0000000U + drx;
}
