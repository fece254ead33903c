#include <windows.h>

#include <filesystem>
#include <random>
#include <string>

#include "tovinCore/platform/Files.h"
#include "tovinCore/platform/PathWindows.h"
#include "tovinCore/platform/WholeFile.h"

namespace tovin::platform {
namespace {

namespace fs = std::filesystem;

constexpr int attempts = 100;

bool writeBytes(intptr_t file, std::string_view bytes) {
  while (!bytes.empty()) {
    const int64_t put = writeFile(file, bytes.data(), bytes.size());
    if (put <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(put));
  }
  return true;
}

bool writeAll(intptr_t file, std::string_view bytes) {
  return writeBytes(file, bytes) && ::FlushFileBuffers(reinterpret_cast<HANDLE>(file)) != 0;
}

// A new file beside the target; -1 when there can be none.
intptr_t createBeside(const std::wstring& target, std::wstring& name) {
  std::random_device random;
  for (int i = 0; i < attempts; ++i) {
    name = target + L"." + std::to_wstring(random());
    const intptr_t file = openFile(name.c_str(), OpenMode::create);
    if (file != -1) return file;
  }
  return -1;
}

// ReplaceFile keeps the permissions and attributes of the file that was there.
bool moveOver(const std::wstring& from, const std::wstring& target) {
  if (::ReplaceFileW(target.c_str(), from.c_str(), nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr,
                     nullptr))
    return true;
  return ::MoveFileExW(from.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

// What a link leads to, so that it stays one.
std::wstring targetOf(const std::wstring& path) {
  std::error_code none;
  if (!fs::is_symlink(path, none)) return path;
  const fs::path target = fs::canonical(path, none);
  return none ? path : target.native();
}

// The reason of a failure stays the last one.
bool replace(const std::wstring& target, std::string_view bytes) {
  std::wstring temporary;
  const intptr_t file = createBeside(target, temporary);
  if (file == -1) return false;
  const bool written = writeAll(file, bytes);
  const DWORD reason = ::GetLastError();
  closeFile(file);
  if (!written) ::SetLastError(reason);
  if (written && moveOver(temporary, target)) return true;
  const DWORD last = ::GetLastError();
  ::DeleteFileW(temporary.c_str());
  ::SetLastError(last);
  return false;
}

}  // namespace

bool pathExists(const wchar_t* name) {
  return ::GetFileAttributesW(systemPath(name).c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool replaceFile(const wchar_t* name, std::string_view bytes) {
  const std::wstring target = targetOf(systemPath(name));
  std::error_code failed;
  fs::create_directories(fs::path(target).parent_path(), failed);
  return replace(target, bytes);
}

bool placeFile(const wchar_t* name, std::string_view bytes) {
  const std::wstring target = targetOf(systemPath(name));
  if (!pathExists(name) || isRegularFile(name)) return replace(target, bytes);
  const intptr_t file = openFile(name, OpenMode::write);
  if (file == -1) return false;
  const bool written = writeBytes(file, bytes);
  closeFile(file);
  return written;
}

}  // namespace tovin::platform
