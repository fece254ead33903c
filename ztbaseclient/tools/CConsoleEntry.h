#pragma once

#include "tovin/Array.h"
#include "tovin/BaseString.h"
#include "ztbaseclient/Export.h"

/// One entry of a job's console log: names and values in the order of their arrival.
///
///     CConsoleEntry entry;
///     entry.SetValue(L"state", L"running");
///     entry.FindValue(L"State");  // L"running"
///
/// - Names: equal when they differ in the case of A to Z only; a null name equals a null name.
/// - Ownership: owns its texts; what FindValue gives is borrowed until the entry changes.
class ZTBASECLIENT_API CConsoleEntry {
 public:
  static constexpr const char* ClassName = "CConsoleEntry";

  struct NameValue {
    tovin::WideString name;
    tovin::WideString value;
  };

  /// Null if there is none, or if its value is null.
  const wchar_t* FindValue(const wchar_t* name) const;
  /// Replaces the first value of this name, or appends a pair.
  void SetValue(const wchar_t* name, const wchar_t* value);
  void RemoveValue(const wchar_t* name);
  void Clear();

  /// All pairs; a name may stand more than once.
  const tovin::Array<NameValue>& GetPairs() const noexcept { return pairs_; }

 private:
  friend class CConsoleReader;

  int FindIdx(const wchar_t* name) const;
  NameValue& Add();

  tovin::Array<NameValue> pairs_;
};
