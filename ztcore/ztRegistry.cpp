#include "ztcore/ztRegistry.h"

#include "tovinCore/Exception.h"
#include "tovinCore/Guard.h"
#include "ztcore/Settings.h"

using tovin::guarded;

namespace {

constexpr const char* ClassName = "ztRegistry";

std::wstring textOf(const wchar_t* text) { return text ? std::wstring(text) : std::wstring(); }

}  // namespace

bool ztRegistry::Connect(Hive) {
  return guarded({ClassName, "Connect"}, [&] {
    store_ = settings::place();
    key_.clear();
    return !store_.empty();
  });
}

bool ztRegistry::Open(const wchar_t* key) {
  return guarded({ClassName, "Open"}, [&] {
    key_.clear();
    if (!Create(key) || settings::hasKey(store_, key_)) return !key_.empty();
    key_.clear();
    return false;
  });
}

bool ztRegistry::Create(const wchar_t* key) {
  return guarded({ClassName, "Create"}, [&] {
    key_ = store_.empty() ? std::wstring() : textOf(key);
    return !key_.empty();
  });
}

bool ztRegistry::GetValue(const wchar_t* name, tovin::WideString& value) const {
  return guarded({ClassName, "GetValue"}, [&] {
    std::wstring text;
    if (key_.empty() || !settings::read(store_, key_, textOf(name), text)) return false;
    value = text;
    return true;
  });
}

void ztRegistry::SetValue(const wchar_t* name, const wchar_t* value) {
  guarded({ClassName, "SetValue"}, [&] {
    if (key_.empty()) throw tovin::Exception(L"No settings key is open");
    settings::write(store_, key_, textOf(name), textOf(value));
  });
}
