#include <windows.h>

#include <cstdlib>
#include <filesystem>

#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Environment.h"

namespace tovin::platform {

std::wstring environmentVariable(const char* name) {
  const std::wstring wideName = utf8ToWide(name);
  std::wstring value;
  for (;;) {
    const DWORD room = static_cast<DWORD>(value.size());
    const DWORD length = ::GetEnvironmentVariableW(wideName.c_str(), value.data(), room);
    value.resize(length);  // with the terminator when it did not fit
    if (length <= room) return value;
  }
}

void setEnvironmentVariable(const char* name, const char* value) { ::_putenv_s(name, value); }

std::wstring temporaryFolder() {
  wchar_t folder[MAX_PATH + 2];
  std::wstring name(folder, ::GetTempPathW(MAX_PATH + 2, folder));
  while (name.ends_with(L'\\')) name.pop_back();
  return name;
}

std::wstring computerName() {
  wchar_t name[MAX_COMPUTERNAME_LENGTH + 1];
  DWORD length = MAX_COMPUTERNAME_LENGTH + 1;
  return ::GetComputerNameW(name, &length) ? std::wstring(name, length) : std::wstring();
}

std::wstring settingsFolder() {
  const std::wstring chosen = environmentVariable("APPDATA");
  return std::filesystem::path(chosen).is_absolute() ? chosen : std::wstring();
}

}  // namespace tovin::platform
