#include "tovinCore/platform/Environment.h"
#include "ztcore/IniText.h"
#include "ztcore/Settings.h"

// The place is a text file's name.
namespace settings {

std::wstring place() {
  const std::wstring folder = tovin::platform::settingsFolder();
  return folder.empty() ? folder : folder + L"/dravolin/settings.ini";
}

bool hasKey(const std::wstring& place, const std::wstring& key) {
  return IniText::load(place).hasSection(key);
}

bool read(const std::wstring& place, const std::wstring& key, const std::wstring& name, std::wstring& value) {
  const auto found = IniText::load(place).find(key, name);
  if (found) value = *found;
  return found.has_value();
}

void write(const std::wstring& place, const std::wstring& key, const std::wstring& name,
           const std::wstring& value) {
  IniText text = IniText::load(place);
  text.set(key, name, value);
  text.save(place);
}

}  // namespace settings
