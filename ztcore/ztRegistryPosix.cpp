#include "tovinCore/Exception.h"
#include "tovinCore/Guard.h"
#include "tovinCore/platform/Environment.h"
#include "ztcore/IniText.h"
#include "ztcore/ztRegistry.h"

using tovin::guarded;

namespace {

constexpr const char* ClassName = "ztRegistry";
constexpr const wchar_t* fileName = L"/dravolin/settings.ini";

std::wstring_view viewOf(const wchar_t* text) { return text ? std::wstring_view(text) : std::wstring_view(); }

}  // namespace

bool ztRegistry::Connect(Hive) {
  return guarded({ClassName, "Connect"}, [&] {
    const std::wstring folder = tovin::platform::settingsFolder();
    store_ = folder.empty() ? folder : folder + fileName;
    key_.clear();
    return !store_.empty();
  });
}

bool ztRegistry::Open(const wchar_t* key) {
  return guarded({ClassName, "Open"}, [&] {
    key_.clear();
    if (!Create(key) || IniText::load(store_).hasSection(key_)) return !key_.empty();
    key_.clear();
    return false;
  });
}

bool ztRegistry::Create(const wchar_t* key) {
  return guarded({ClassName, "Create"}, [&] {
    key_ = store_.empty() ? std::wstring_view() : viewOf(key);
    return !key_.empty();
  });
}

bool ztRegistry::GetValue(const wchar_t* name, tovin::WideString& value) const {
  return guarded({ClassName, "GetValue"}, [&] {
    if (key_.empty()) return false;
    const auto found = IniText::load(store_).find(key_, viewOf(name));
    if (found) value = *found;
    return found.has_value();
  });
}

void ztRegistry::SetValue(const wchar_t* name, const wchar_t* value) {
  guarded({ClassName, "SetValue"}, [&] {
    if (key_.empty()) throw tovin::Exception(L"No settings key is open");
    IniText text = IniText::load(store_);
    text.set(key_, viewOf(name), viewOf(value));
    text.save(store_);
  });
}
