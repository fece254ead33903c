#pragma once

#include <string>

#include "tovinCore/Export.h"

/// What the process and its user are told about where they are.
namespace tovin::platform {

/// Empty when it is not set.
TOVINCORE_API std::wstring environmentVariable(const char* name);
/// For this process and those that it starts. Threads: none may read the environment meanwhile.
TOVINCORE_API void setEnvironmentVariable(const char* name, const char* value);
/// Where temporary files lie; it may not be there.
TOVINCORE_API std::wstring temporaryFolder();
/// Without a domain; empty when the system does not tell.
TOVINCORE_API std::wstring computerName();
/// Where programs keep the user's settings; empty when the user has no home. On Windows `%APPDATA%` if that
/// is absolute, elsewhere `$XDG_CONFIG_HOME` if that is absolute, else `~/.config`.
TOVINCORE_API std::wstring settingsFolder();

}  // namespace tovin::platform
