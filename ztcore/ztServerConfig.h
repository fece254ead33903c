#pragma once

#include "tovin/BaseString.h"
#include "ztcore/Export.h"

/// The server's configuration: name=value lines in the file that the environment variable
/// DRAVOLIN_SERVER_CONFIG names, else in `dravolin/server.conf` in the user's settings folder. '#' begins a
/// comment; names fold ASCII case; the first of two equal ones counts.
///
///     WideString value;
///     if (ztServerConfig::GetParameter(DRV_DRVDEVNOHTTP, value)) …
///
/// - Errors: no file or no such name is a false result; "Unable to read settings file %ls" for a file that
///   cannot be read.
class ZTCORE_API ztServerConfig {
 public:
  static bool GetParameter(const wchar_t* name, tovin::WideString& value);
};
