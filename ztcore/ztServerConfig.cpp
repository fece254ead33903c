#include "ztcore/ztServerConfig.h"

#include "tovinCore/Guard.h"
#include "tovinCore/platform/Environment.h"
#include "ztcore/IniText.h"

namespace {

constexpr const char* variable = "DRAVOLIN_SERVER_CONFIG";
constexpr const wchar_t* fileName = L"/dravolin/server.conf";

std::wstring configurationFile() {
  const std::wstring chosen = tovin::platform::environmentVariable(variable);
  if (!chosen.empty()) return chosen;
  const std::wstring folder = tovin::platform::settingsFolder();
  return folder.empty() ? folder : folder + fileName;
}

}  // namespace

bool ztServerConfig::GetParameter(const wchar_t* name, tovin::WideString& value) {
  return tovin::guarded({"ztServerConfig", "GetParameter"}, [&] {
    const std::wstring file = configurationFile();
    if (file.empty() || !name) return false;
    const auto found = IniText::load(file).find({}, name);
    if (found) value = *found;
    return found.has_value();
  });
}
