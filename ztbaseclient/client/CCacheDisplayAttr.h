#pragma once

#include "tovin/BaseString.h"
#include "ztbaseclient/Export.h"

/// How cached results are to be displayed, and the compact text that says so: view type, data group, page
/// size, page number, a text and image state, separated by ';'.
///
///     CCacheDisplayAttr attr;
///     attr.SetDisplayAttr(L"2;4");
///     attr.GetPageSize();              // 10: fields that are missing keep their defaults
///     attr.DisplayPassDataOnly();      // false
///
/// - Shape: a plain value. A field that is no number counts as 0.
/// - Errors: none of its own.
class ZTBASECLIENT_API CCacheDisplayAttr {
 public:
  /// Bits of the data group.
  enum DataGroup { PassData = 0x2, FailData = 0x4, Globals = 0x8 };

  /// To the defaults, with no text.
  void Reset();
  void SetDisplayAttr(const wchar_t* text);
  /// The text as it was set; null before.
  const wchar_t* Serialize() const noexcept { return text_.c_str(); }
  /// Reads the fields out of the text if that was not done yet.
  void EnsureUpToDate();

  int GetViewType() const noexcept { return viewType_; }
  int GetDataGroup() const noexcept { return dataGroup_; }
  int GetPageSize() const noexcept { return pageSize_; }
  int GetDisplayPageNum() const noexcept { return displayPageNum_; }
  int GetImageState() const noexcept { return imageState_; }
  /// "Only" is the absence of the other group.
  bool DisplayPassDataOnly() const noexcept { return (dataGroup_ & FailData) == 0; }
  bool DisplayFailDataOnly() const noexcept { return (dataGroup_ & PassData) == 0; }
  bool DisplayGlobals() const noexcept { return (dataGroup_ & Globals) != 0; }

  /// The text for the first page of all data, pass and fail.
  static void GetDefaultDisplayAttr(int pageSize, tovin::WideString& out);

 private:
  tovin::WideString text_;
  bool upToDate_ = false;
  int dataGroup_ = PassData;
  int viewType_ = 1;
  int pageSize_ = 10;
  int displayPageNum_ = 1;
  tovin::WideString displayText_;
  int imageState_ = 1;
};
