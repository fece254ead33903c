#include "tovinCore/platform/PathWindows.h"

#include <windows.h>

#include <string_view>

namespace tovin::platform {
namespace {

// A folder may have 12 units less than a file, for a short name that must fit in it.
constexpr size_t shortEnough = MAX_PATH - 12;

std::wstring absolutePath(const wchar_t* name) {
  std::wstring path(shortEnough, L'\0');
  for (;;) {
    const DWORD length = ::GetFullPathNameW(name, static_cast<DWORD>(path.size()), path.data(), nullptr);
    const bool fits = length < path.size();
    path.resize(length);
    if (fits) return path;
  }
}

}  // namespace

std::wstring systemPath(const wchar_t* name) {
  std::wstring path = absolutePath(name);
  if (path.empty()) return name;
  const std::wstring_view view = path;
  const bool marked = view.starts_with(L"\\\\?\\") || view.starts_with(L"\\\\.\\");
  if (marked || path.size() < shortEnough) return path;
  if (view.starts_with(L"\\\\")) return L"\\\\?\\UNC" + path.substr(1);
  return L"\\\\?\\" + path;
}

}  // namespace tovin::platform
