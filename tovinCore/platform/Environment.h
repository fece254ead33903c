#pragma once

#include <string>

#include "tovinCore/Export.h"

/// What the process and its user are told about where they are.
namespace tovin::platform {

/// Empty when it is not set.
TOVINCORE_API std::wstring environmentVariable(const char* name);
/// Without a domain; empty when the system does not tell.
TOVINCORE_API std::wstring computerName();
/// Where programs keep the user's settings: `$XDG_CONFIG_HOME` if that is absolute, else `~/.config`; empty
/// when the user has no home.
TOVINCORE_API std::wstring settingsFolder();

/// Whether standard error is a terminal, where people watch.
TOVINCORE_API bool isErrorTerminal() noexcept;
/// The same of standard output.
TOVINCORE_API bool isOutputTerminal() noexcept;

}  // namespace tovin::platform
