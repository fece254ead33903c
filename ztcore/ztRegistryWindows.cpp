#include <windows.h>

#include <cwchar>

#include "tovinCore/Exception.h"
#include "tovinCore/Guard.h"
#include "ztcore/ztRegistry.h"

using tovin::guarded;

namespace {

constexpr const char* ClassName = "ztRegistry";
constexpr const wchar_t* currentUser = L"HKEY_CURRENT_USER";

std::wstring_view viewOf(const wchar_t* text) { return text ? std::wstring_view(text) : std::wstring_view(); }

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

bool ztRegistry::Connect(Hive) {
  return guarded({ClassName, "Connect"}, [&] {
    store_ = currentUser;
    key_.clear();
    return true;
  });
}

bool ztRegistry::Open(const wchar_t* key) {
  return guarded({ClassName, "Open"}, [&] {
    Key opened;
    if (Create(key) && opened.open(key_, KEY_ALL_ACCESS)) return true;
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
    Key key;
    std::wstring text;
    if (key_.empty() || viewOf(name).empty() || !key.open(key_, KEY_QUERY_VALUE)) return false;
    if (!readText(key.get(), name, text)) return false;
    value = text;
    return true;
  });
}

void ztRegistry::SetValue(const wchar_t* name, const wchar_t* value) {
  guarded({ClassName, "SetValue"}, [&] {
    if (key_.empty()) throw tovin::Exception(L"No settings key is open");
    if (viewOf(name).empty()) throw tovin::Exception(L"A settings value has no name");
    const std::wstring text(viewOf(value));
    const auto bytes = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    Key key;
    const bool done = key.create(key_, KEY_SET_VALUE) &&
                      ::RegSetValueExW(key.get(), name, 0, REG_SZ,
                                       reinterpret_cast<const BYTE*>(text.c_str()), bytes) == ERROR_SUCCESS;
    if (!done) throw tovin::Exception(L"Unable to write settings value %ls", name);
  });
}
