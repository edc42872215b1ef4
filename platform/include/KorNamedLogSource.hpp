#pragma once

#include "KorWstring.hpp"

/// A named source of trace records; copies keep the name.
///
/// Threads: const members may be used from any thread.
class KorNamedLogSource {
public:
  /// A source named by a wide literal.
  explicit KorNamedLogSource(const wchar_t* name);
  /// Shares name's buffer: records made in bulk then cost no allocation.
  explicit KorNamedLogSource(const KorWstring& name) : logSourceName_(name) {}
  /// Keeps the name.
  KorNamedLogSource(const KorNamedLogSource&) = default;
  /// Takes the other's name.
  KorNamedLogSource& operator=(const KorNamedLogSource&) = default;
  /// Destroys the name.
  virtual ~KorNamedLogSource();

  /// The name trace records of this source carry.
  const KorWstring& logSourceName() const noexcept { return logSourceName_; }

private:
  KorWstring logSourceName_;
};
