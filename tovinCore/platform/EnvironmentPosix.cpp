#include <unistd.h>

#include <cstdlib>

#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Environment.h"
#include "tovinCore/platform/Paths.h"

namespace tovin::platform {

std::wstring environmentVariable(const char* name) {
  const char* value = std::getenv(name);
  return value ? utf8ToWide(value) : std::wstring();
}

void setEnvironmentVariable(const char* name, const char* value) { ::setenv(name, value, 1); }

std::wstring temporaryFolder() {
  const char* chosen = std::getenv("TMPDIR");
  return chosen && *chosen ? fileName(chosen) : L"/tmp";
}

std::wstring computerName() {
  char name[256];
  if (::gethostname(name, sizeof name) != 0) return {};
  name[sizeof name - 1] = 0;  // a name that was cut has no end
  const std::wstring full = utf8ToWide(name);
  return full.substr(0, full.find(L'.'));
}

std::wstring settingsFolder() {
  const std::wstring chosen = environmentVariable("XDG_CONFIG_HOME");
  if (chosen.starts_with(L'/')) return chosen;
  const std::wstring home = environmentVariable("HOME");
  return home.empty() ? home : home + L"/.config";
}

}  // namespace tovin::platform
