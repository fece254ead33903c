#pragma once

#include <memory>

#include "tovin/BaseString.h"
#include "ztbaseclient/Export.h"

/// A digest of a sequence of texts: 32 lower-case hexadecimal digits that depend on every character, on where
/// one text ends and the next begins, and on their order. The server computes the same.
///
///     ztChecksum checksum;
///     checksum.AddString(L"user");
///     checksum.AddString(L"server");
///     send(checksum.GetChecksum());
///
/// - Shape: characters are UTF-16 units; a null text counts as an empty one.
/// - Ownership: owns its state and the last digest; a moved-from object has no state until it is used again.
/// - Memory: constant, however much is added.
/// - Threads: one thread at a time.
class ZTBASECLIENT_API ztChecksum {
 public:
  static constexpr const char* ClassName = "ztChecksum";

  ztChecksum();
  ztChecksum(const ztChecksum& other);
  ztChecksum& operator=(const ztChecksum& other);
  ztChecksum(ztChecksum&& other) noexcept;
  ztChecksum& operator=(ztChecksum&& other) noexcept;
  ~ztChecksum();

  /// As new.
  void Reset();
  void AddString(const wchar_t* text);
  /// The digest of what was added so far; more may follow. Borrowed until the next call; null without a
  /// state.
  const wchar_t* GetChecksum() const;

 private:
  class State;

  std::unique_ptr<State> state_;
  mutable tovin::WideString digest_;
};
