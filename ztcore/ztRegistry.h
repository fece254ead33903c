#pragma once

#include <string>

#include "tovin/BaseString.h"
#include "ztcore/Export.h"

/// The user's settings by key and value names: on Windows the registry, elsewhere a text file,
/// `dravolin/settings.ini` in the user's settings folder, with a section a key:
///
///     [Software\DraVolin\Corvanta_8_0_1]
///     ServerEndpoint=https://atlas:9943/dravolin/locator
///
///     ztRegistry registry;
///     if (registry.Connect(ztRegistry::CurrentUser) && registry.Open(key) && registry.GetValue(name, value))
///     …
///
/// - Names fold ASCII case; a value has one, it is never a key's nameless default.
/// - Writing: the file is replaced in one step; comments and lines that mean nothing stay as they are.
/// - Errors: what is not there is a false result. Of the registry "Unable to write settings value %ls"; of
///   the file "Unable to read settings file %ls" for one that cannot be read or is a folder, "Settings file
///   %ls is longer than %d bytes", "Unable to write settings file %ls"; names and values with line breaks are
///   refused.
class ZTCORE_API ztRegistry {
 public:
  enum Hive { CurrentUser = 1 };

  /// False when the user has no settings folder.
  bool Connect(Hive hive);
  /// Opens a key for reading and writing; false when there is none.
  bool Open(const wchar_t* key);
  /// Opens a key that comes to be with its first value.
  bool Create(const wchar_t* key);
  bool GetValue(const wchar_t* name, tovin::WideString& value) const;
  void SetValue(const wchar_t* name, const wchar_t* value);

 private:
  std::wstring store_;
  std::wstring key_;
};
