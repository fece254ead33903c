#pragma once

#include <cstdint>
#include <string_view>

#include "tovin/BaseString.h"
#include "ztcore/Export.h"

/// A text file in memory, which may grow while it is read.
///
///     ztMemoryStringFile file(L"first\n");
///     ztStringReader reader(file);
///     file.Append(L"second\n");  // the reader will come to it
///
/// - Units: a position in it counts characters (elements of the wide text), from 0.
/// - Ownership: owns its text; GetText() is borrowed until the next Append().
class ZTCORE_API ztMemoryStringFile {
 public:
  ztMemoryStringFile() = default;
  explicit ztMemoryStringFile(const wchar_t* text) { Append(text); }

  /// Null adds nothing.
  void Append(const wchar_t* text) { text_ += text; }
  void Append(std::wstring_view text) { text_ += text; }
  std::wstring_view GetText() const noexcept { return text_.view(); }
  int64_t GetLength() const noexcept { return static_cast<int64_t>(text_.getLength()); }

 private:
  tovin::WideString text_;
};
