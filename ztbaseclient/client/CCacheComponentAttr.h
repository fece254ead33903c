#pragma once

#include "tovin/BaseString.h"
#include "ztbaseclient/Export.h"

/// The component that a cache request is about: its run-time id, its ports (bit 1 pass, bit 2 fail), how many
/// records left it by each, and the property that tags them, as "id;ports;pass:fail;tag".
///
/// - Shape: a plain value. The text is kept and written back as it came; fields that are missing are empty or
///   0.
/// - Errors: none of its own.
class ZTBASECLIENT_API CCacheComponentAttr {
 public:
  void Reset();
  void Parse(const wchar_t* text);
  /// The text as it was parsed; null before.
  const wchar_t* Serialize() const noexcept { return text_.c_str(); }

  const wchar_t* GetRunTimeID() const noexcept { return runTimeId_.c_str(); }
  const wchar_t* GetTagProp() const noexcept { return tagProp_.c_str(); }
  bool HasPassPort() const noexcept { return (ports_ & 1) != 0; }
  bool HasFailPort() const noexcept { return (ports_ & 2) != 0; }
  int GetPassRecordSize() const noexcept { return passRecordSize_; }
  int GetFailRecordSize() const noexcept { return failRecordSize_; }

 private:
  tovin::WideString text_;
  tovin::WideString runTimeId_;
  int ports_ = 0;
  int passRecordSize_ = 0;
  int failRecordSize_ = 0;
  tovin::WideString tagProp_;
};
