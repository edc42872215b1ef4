#include "KorLog.hpp"

#include "KorLogSink.hpp"
#include "KorNamedLogSource.hpp"
#include "KorWstringText.hpp"

#include <cinttypes>
#include <cstdio>
#include <utility>

std::atomic<int> KorLog::iEffectiveLogFilter{0};
const wchar_t* const KorLog::iDefaultLogSource = L"KorDefaultLogSource";

namespace {

// The flag lets the write path skip the lock and the record while no sink is
// installed, which is the common case.
struct KorSinkSlot {
  std::mutex mutex;
  std::shared_ptr<KorLogSink> sink;
  std::atomic<bool> installed{false};
};

// Never destroyed, like the default source name below: static destructors of
// other libraries may still trace during process exit.
KorSinkSlot& sinkSlot() {
  static auto* slot = new KorSinkSlot;
  return *slot;
}

const KorWstring& defaultSourceName() {
  static const auto* name = new KorWstring(KorWstringConvertor::toKorWstring(KorLog::iDefaultLogSource));
  return *name;
}

std::atomic<KorLogToken> lastToken{0};

KorLogToken nextToken() noexcept {
  return lastToken.fetch_add(1, std::memory_order_relaxed) + 1;
}

std::shared_ptr<KorLogSink> currentSink() {
  KorSinkSlot& slot = sinkSlot();
  if (!slot.installed.load(std::memory_order_acquire)) {
    return nullptr;
  }
  std::lock_guard<std::mutex> lock(slot.mutex);
  return slot.sink;
}

void emit(KorLogKind kind, const char* function, const KorWstring& source, KorLogToken token,
          KorLog::Inserts inserts) {
  const std::shared_ptr<KorLogSink> sink = currentSink();
  if (!sink) {
    return;
  }
  KorLogRecord record{kind, function != nullptr ? function : "", source, token, {}};
  record.inserts.reserve(inserts.size());
  for (const KorLogInsert& insert : inserts) {
    record.inserts.push_back(insert.text());
  }
  sink->write(record);
}

const char* kindName(KorLogKind kind) noexcept {
  switch (kind) {
  case KorLogKind::entry:
    return "entry";
  case KorLogKind::exit:
    return "exit";
  case KorLogKind::trace:
    return "trace";
  case KorLogKind::debugEntry:
    return "debugEntry";
  case KorLogKind::debugExit:
    return "debugExit";
  case KorLogKind::debugTrace:
    return "debugTrace";
  case KorLogKind::systemError:
    return "systemError";
  }
  return "unknown";
}

void appendQuoted(const std::string& text, std::string& out) {
  out += '"';
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (c == '\n') {
      out += "\\n";
    } else if (c == '\r') {
      out += "\\r";
    } else if (c == '\t') {
      out += "\\t";
    } else if (byte < 0x20 || byte == 0x7F) {
      char escaped[5];
      std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
      out += escaped;
    } else {
      out += c;
    }
  }
  out += '"';
}

} // namespace

KorLogInsert::KorLogInsert(const char* utf8) {
  if (utf8 == nullptr) {
    return;
  }
  std::string_view rest(utf8);
  for (;;) {
    try {
      text_ += KorWstringText::fromUtf8(rest);
      return;
    } catch (const KorWstringEncodingError& error) {
      // The offset starts the bad sequence, so everything before it is valid.
      static const KorWstring replacement = KorWstringText::fromUtf16(u"\uFFFD");
      text_ += KorWstringText::fromUtf8(rest.substr(0, error.offset()));
      text_ += replacement;
      rest.remove_prefix(error.offset() + 1);
    }
  }
}

KorLogInsert::KorLogInsert(const wchar_t* literal) {
  if (literal != nullptr) {
    text_ = KorWstringConvertor::toKorWstring(literal);
  }
}

KorLogInsert::KorLogInsert(long long value) : text_(KorWstringText::fromUtf8(std::to_string(value))) {}

KorLogInsert::KorLogInsert(unsigned long long value)
    : text_(KorWstringText::fromUtf8(std::to_string(value))) {}

KorLogInsert::KorLogInsert(bool value) : text_(KorWstringText::fromUtf16(value ? u"true" : u"false")) {}

KorLogInsert::KorLogInsert(const void* address) {
  char hex[2 + 2 * sizeof(std::uintptr_t) + 1];
  std::snprintf(hex, sizeof hex, "0x%" PRIxPTR, reinterpret_cast<std::uintptr_t>(address));
  text_ = KorWstringText::fromUtf8(hex);
}

KorLogSink::~KorLogSink() = default;

void KorLogCapture::write(const KorLogRecord& record) {
  std::lock_guard<std::mutex> lock(mutex_);
  records_.push_back(record);
}

std::vector<KorLogRecord> KorLogCapture::records() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return records_;
}

void KorLogCapture::clear() {
  std::lock_guard<std::mutex> lock(mutex_);
  records_.clear();
}

KorLogToken KorLog::entry(const char* function, Inserts inserts) {
  const KorLogToken token = nextToken();
  emit(KorLogKind::entry, function, defaultSourceName(), token, inserts);
  return token;
}

KorLogToken KorLog::entry(const KorNamedLogSource& source, const char* function, Inserts inserts) {
  const KorLogToken token = nextToken();
  emit(KorLogKind::entry, function, source.logSourceName(), token, inserts);
  return token;
}

void KorLog::exit(const char* function, KorLogToken token, Inserts inserts) {
  emit(KorLogKind::exit, function, defaultSourceName(), token, inserts);
}

void KorLog::exit(const KorNamedLogSource& source, const char* function, KorLogToken token, Inserts inserts) {
  emit(KorLogKind::exit, function, source.logSourceName(), token, inserts);
}

void KorLog::trace(const char* function, KorLogToken token, Inserts inserts) {
  emit(KorLogKind::trace, function, defaultSourceName(), token, inserts);
}

void KorLog::trace(const char* function, KorLogToken token, const std::vector<KorWstring>& inserts) {
  if (const std::shared_ptr<KorLogSink> sink = currentSink()) {
    sink->write(
        {KorLogKind::trace, function != nullptr ? function : "", defaultSourceName(), token, inserts});
  }
}

KorLogToken KorLog::debugEntry(const char* function, Inserts inserts) {
  const KorLogToken token = nextToken();
  emit(KorLogKind::debugEntry, function, defaultSourceName(), token, inserts);
  return token;
}

void KorLog::debugExit(const char* function, KorLogToken token, Inserts inserts) {
  emit(KorLogKind::debugExit, function, defaultSourceName(), token, inserts);
}

void KorLog::debugTrace(const char* function, KorLogToken token, Inserts inserts) {
  emit(KorLogKind::debugTrace, function, defaultSourceName(), token, inserts);
}

void KorLogSink::publish(const KorLogRecord& record) {
  if (const std::shared_ptr<KorLogSink> sink = currentSink()) {
    sink->write(record);
  }
}

std::shared_ptr<KorLogSink> KorLogSink::install(std::shared_ptr<KorLogSink> sink) {
  KorSinkSlot& slot = sinkSlot();
  std::lock_guard<std::mutex> lock(slot.mutex);
  slot.installed.store(sink != nullptr, std::memory_order_release);
  std::swap(slot.sink, sink);
  return sink;
}

std::string toString(const KorLogRecord& record) {
  std::string line = kindName(record.kind);
  line += ' ';
  line += record.function;
  line += " [";
  line += KorWstringText::toUtf8(record.source);
  line += "] #";
  line += std::to_string(record.token);
  for (const KorWstring& insert : record.inserts) {
    line += ' ';
    appendQuoted(KorWstringText::toUtf8(insert), line);
  }
  return line;
}
