#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <system_error>

#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Files.h"
#include "tovinCore/platform/PathWindows.h"

namespace tovin::platform {
namespace {

// One call moves at most so many bytes; callers ask again for the rest.
constexpr size_t longestPiece = size_t{1} << 30;
constexpr DWORD sharedWithAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

struct Opening {
  DWORD access;
  DWORD disposition;
};

Opening openingOf(OpenMode mode) {
  switch (mode) {
    case OpenMode::write:
      return {GENERIC_WRITE, CREATE_ALWAYS};
    case OpenMode::append:
      return {FILE_APPEND_DATA | SYNCHRONIZE, OPEN_ALWAYS};
    case OpenMode::probe:
      return {GENERIC_WRITE, OPEN_EXISTING};
    case OpenMode::create:
      return {GENERIC_WRITE, CREATE_NEW};
    default:
      return {GENERIC_READ, OPEN_EXISTING};
  }
}

HANDLE handleOf(intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

DWORD pieceOf(size_t count) { return static_cast<DWORD>(std::min(count, longestPiece)); }

}  // namespace

// A folder is refused by the system itself; who may read a new file is as its folder says.
intptr_t openFile(const wchar_t* name, OpenMode mode) {
  const Opening opening = openingOf(mode);
  const std::wstring path = systemPath(name);
  const bool regular = mode == OpenMode::readRegular;
  if (regular && path.starts_with(L"\\\\.\\")) return -1;  // a device or a pipe
  const HANDLE file = ::CreateFileW(path.c_str(), opening.access, sharedWithAll, nullptr, opening.disposition,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file != INVALID_HANDLE_VALUE && regular && ::GetFileType(file) != FILE_TYPE_DISK) {
    ::CloseHandle(file);
    return -1;
  }
  return reinterpret_cast<intptr_t>(file);
}

void closeFile(intptr_t handle) noexcept { ::CloseHandle(handleOf(handle)); }

int64_t readFile(intptr_t handle, void* bytes, size_t count) noexcept {
  DWORD got = 0;
  if (::ReadFile(handleOf(handle), bytes, pieceOf(count), &got, nullptr)) return got;
  return ::GetLastError() == ERROR_BROKEN_PIPE ? 0 : -1;  // how a pipe ends
}

int64_t writeFile(intptr_t handle, const void* bytes, size_t count) noexcept {
  DWORD put = 0;
  return ::WriteFile(handleOf(handle), bytes, pieceOf(count), &put, nullptr) ? int64_t{put} : -1;
}

bool seekFile(intptr_t handle, int64_t position) noexcept {
  LARGE_INTEGER target;
  target.QuadPart = position;
  return ::SetFilePointerEx(handleOf(handle), target, nullptr, FILE_BEGIN) != 0;
}

int64_t fileLength(intptr_t handle) noexcept {
  LARGE_INTEGER length;
  return ::GetFileSizeEx(handleOf(handle), &length) ? length.QuadPart : -1;
}

// Of the marked forms too, "\\\\?\\UNC\\computer\\folder"; either separator will do.
std::wstring networkShareOf(std::wstring_view name) {
  std::wstring path(name);
  std::replace(path.begin(), path.end(), L'/', L'\\');
  constexpr std::wstring_view marked = L"\\\\?\\UNC\\";
  if (path.starts_with(marked)) path.replace(0, marked.size(), L"\\\\");
  if (!path.starts_with(L"\\\\") || path.starts_with(L"\\\\?") || path.starts_with(L"\\\\.\\")) return {};
  const size_t folder = path.find(L'\\', 2);
  return path.substr(0, folder == std::wstring::npos ? folder : path.find(L'\\', folder + 1));
}

intptr_t standardInput() noexcept { return reinterpret_cast<intptr_t>(::GetStdHandle(STD_INPUT_HANDLE)); }
intptr_t standardOutput() noexcept { return reinterpret_cast<intptr_t>(::GetStdHandle(STD_OUTPUT_HANDLE)); }

intptr_t createNameless(const std::wstring& folder, std::wstring& name) {
  constexpr int attempts = 100;
  std::random_device random;
  for (int i = 0; i < attempts; ++i) {
    name = folder + L"\\ztclient-" + std::to_wstring(random());
    const HANDLE file =
        ::CreateFileW(systemPath(name.c_str()).c_str(), GENERIC_READ | GENERIC_WRITE, sharedWithAll, nullptr,
                      CREATE_NEW, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file != INVALID_HANDLE_VALUE) return reinterpret_cast<intptr_t>(file);
    if (::GetLastError() != ERROR_FILE_EXISTS) break;
  }
  return -1;
}

bool lastFailureMayPass() noexcept {
  switch (::GetLastError()) {
    case ERROR_TOO_MANY_OPEN_FILES:
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_DISK_FULL:
    case ERROR_IO_DEVICE:
      return true;
    default:
      return false;
  }
}

// In the words that other systems have for it too, where they have any.
std::wstring lastFailure() {
  const DWORD error = ::GetLastError();
  const std::error_condition known = std::system_category().default_error_condition(static_cast<int>(error));
  if (known.category() == std::generic_category()) return utf8ToWide(known.message());
  wchar_t text[512];
  const DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        error, 0, text, 512, nullptr);
  std::wstring reason(text, length);
  while (!reason.empty() && (reason.back() == L'.' || reason.back() <= L' ')) reason.pop_back();
  return reason;
}

bool isRegularFile(const wchar_t* name) {
  const std::wstring path = systemPath(name);
  if (path.starts_with(L"\\\\.\\")) return false;  // a device or a pipe
  const DWORD attributes = ::GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool isSameFile(const wchar_t* a, const wchar_t* b) {
  std::error_code none;
  return std::filesystem::equivalent(systemPath(a), systemPath(b), none);
}

FileIdentity identityOf(const wchar_t* name) {
  // Whoever writes the file may still rename or delete it.
  const HANDLE file = ::CreateFileW(systemPath(name).c_str(), FILE_READ_ATTRIBUTES,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return {};
  BY_HANDLE_FILE_INFORMATION facts;
  const bool isKnown = ::GetFileInformationByHandle(file, &facts);
  ::CloseHandle(file);
  if (!isKnown) return {};
  return {facts.dwVolumeSerialNumber, (uint64_t{facts.nFileIndexHigh} << 32) | facts.nFileIndexLow};
}

}  // namespace tovin::platform
