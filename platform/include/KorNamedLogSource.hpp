#pragma once

#include "KorWstring.hpp"

// A named source of trace records; copies keep the name.
class KorNamedLogSource {
public:
  explicit KorNamedLogSource(const wchar_t* name);
  // Shares name's buffer: records made in bulk then cost no allocation.
  explicit KorNamedLogSource(const KorWstring& name) : logSourceName_(name) {}
  KorNamedLogSource(const KorNamedLogSource&) = default;
  KorNamedLogSource& operator=(const KorNamedLogSource&) = default;
  virtual ~KorNamedLogSource();

  const KorWstring& logSourceName() const noexcept { return logSourceName_; }

private:
  KorWstring logSourceName_;
};
