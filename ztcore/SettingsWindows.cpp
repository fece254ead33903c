#include "ztcore/Settings.h"

#include <windows.h>

#include <cwchar>

#include "tovinCore/Exception.h"

namespace settings {
namespace {

// An open key, closed when it dies.
class Key {
 public:
  Key() = default;
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;
  ~Key() {
    if (key_) ::RegCloseKey(key_);
  }

  bool open(const std::wstring& name, REGSAM access) {
    return ::RegOpenKeyExW(HKEY_CURRENT_USER, name.c_str(), 0, access, &key_) == ERROR_SUCCESS;
  }
  bool create(const std::wstring& name, REGSAM access) {
    return ::RegCreateKeyExW(HKEY_CURRENT_USER, name.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, access,
                             nullptr, &key_, nullptr) == ERROR_SUCCESS;
  }
  HKEY get() const { return key_; }

 private:
  HKEY key_ = nullptr;
};

// A text of the registry, its variables expanded. The value may change between two looks at it.
bool readText(HKEY key, const wchar_t* name, std::wstring& text) {
  LSTATUS status;
  do {
    DWORD bytes = 0;
    status = ::RegGetValueW(key, nullptr, name, RRF_RT_REG_SZ, nullptr, nullptr, &bytes);
    if (status != ERROR_SUCCESS) return false;
    text.resize(bytes / sizeof(wchar_t) + 1);
    bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    status = ::RegGetValueW(key, nullptr, name, RRF_RT_REG_SZ, nullptr, text.data(), &bytes);
  } while (status == ERROR_MORE_DATA);
  text.resize(std::wcslen(text.c_str()));
  return status == ERROR_SUCCESS;
}

}  // namespace

// All keys are looked for in the branch of the registry that is the user's.
std::wstring place() { return L"HKEY_CURRENT_USER"; }

bool hasKey(const std::wstring&, const std::wstring& name) {
  Key key;
  return key.open(name, KEY_ALL_ACCESS);
}

bool read(const std::wstring&, const std::wstring& keyName, const std::wstring& name, std::wstring& value) {
  Key key;
  return !name.empty() && key.open(keyName, KEY_QUERY_VALUE) && readText(key.get(), name.c_str(), value);
}

void write(const std::wstring&, const std::wstring& keyName, const std::wstring& name,
           const std::wstring& value) {
  if (name.empty()) throw tovin::Exception(L"A settings value has no name");
  const auto bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
  Key key;
  const bool done = key.create(keyName, KEY_SET_VALUE) &&
                    ::RegSetValueExW(key.get(), name.c_str(), 0, REG_SZ,
                                     reinterpret_cast<const BYTE*>(value.c_str()), bytes) == ERROR_SUCCESS;
  if (!done) throw tovin::Exception(L"Unable to write settings value %ls", name.c_str());
}

}  // namespace settings
