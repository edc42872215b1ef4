#pragma once

#include "KorWstring.hpp"

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <vector>

class KorNamedLogSource;

using KorLogToken = std::uint64_t;

// One insert of a trace record, already rendered as text: integers in
// decimal, bool as true/false, addresses as 0x hex. A null text is empty;
// each invalid UTF-8 sequence becomes U+FFFD, so tracing never fails on text.
class KorLogInsert {
public:
  KorLogInsert(const KorWstring& text) : text_(text) {}
  KorLogInsert(const char* utf8);
  // Without this a wide literal would bind to const void* and print as an address.
  KorLogInsert(const wchar_t* literal);
  KorLogInsert(long long value);
  KorLogInsert(unsigned long long value);
  KorLogInsert(int value) : KorLogInsert(static_cast<long long>(value)) {}
  KorLogInsert(unsigned value) : KorLogInsert(static_cast<long long>(value)) {}
  // size_t and jlong would otherwise be ambiguous.
  KorLogInsert(long value) : KorLogInsert(static_cast<long long>(value)) {}
  KorLogInsert(unsigned long value) : KorLogInsert(static_cast<unsigned long long>(value)) {}
  KorLogInsert(bool value);
  KorLogInsert(const void* address);

  const KorWstring& text() const noexcept { return text_; }

private:
  KorWstring text_;
};

// The trace facility. Callers test iEffectiveLogFilter before building an
// item: plain items above 2, debug items above 3. The item functions write
// unconditionally to the sink the host installed (none by default; see
// KorLogSink.hpp).
class KorLog {
public:
  static std::atomic<int> iEffectiveLogFilter;
  static const wchar_t* const iDefaultLogSource;

  using Inserts = std::initializer_list<KorLogInsert>;

  // Entry items return the token that the matching exit item and any
  // exception raised meanwhile carry.
  static KorLogToken entry(const char* function, Inserts inserts = {});
  static KorLogToken entry(const KorNamedLogSource& source, const char* function, Inserts inserts = {});
  static void exit(const char* function, KorLogToken token, Inserts inserts = {});
  static void exit(const KorNamedLogSource& source, const char* function, KorLogToken token,
                   Inserts inserts = {});
  static void trace(const char* function, KorLogToken token, Inserts inserts);
  static void trace(const char* function, KorLogToken token, const std::vector<KorWstring>& inserts);
  static KorLogToken debugEntry(const char* function, Inserts inserts = {});
  static void debugExit(const char* function, KorLogToken token, Inserts inserts = {});
  static void debugTrace(const char* function, KorLogToken token, Inserts inserts);
};
