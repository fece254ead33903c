#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Files.h"
#include "tovinCore/platform/WholeFile.h"

namespace tovin::platform {
namespace {

namespace fs = std::filesystem;

fs::path targetOf(const fs::path& name) {
  std::error_code none;
  const fs::path target = fs::canonical(name, none);
  return none ? name : target;
}

bool writeAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const int64_t put = writeFile(file, bytes.data(), bytes.size());
    if (put <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(put));
  }
  return ::fsync(file) == 0;
}

// A file that was there keeps its mode.
void copyMode(int file, const fs::path& from) {
  struct stat facts;
  if (::stat(from.c_str(), &facts) == 0) ::fchmod(file, facts.st_mode & 07777);
}

bool replace(const fs::path& target, std::string_view bytes) {
  std::error_code failed;
  fs::create_directories(target.parent_path(), failed);
  if (fs::is_directory(target, failed)) return false;
  std::string temporary = target.native() + ".XXXXXX";
  const int file = ::mkstemp(temporary.data());
  if (file < 0) return false;
  copyMode(file, target);
  const bool written = writeAll(file, bytes);
  const bool done = ::close(file) == 0 && written && ::rename(temporary.c_str(), target.c_str()) == 0;
  if (!done) ::unlink(temporary.c_str());
  return done;
}

}  // namespace

bool pathExists(const wchar_t* name) {
  struct stat facts;
  return ::lstat(wideToUtf8(name).c_str(), &facts) == 0;
}

bool replaceFile(const wchar_t* name, std::string_view bytes) {
  return replace(targetOf(wideToUtf8(name)), bytes);
}

}  // namespace tovin::platform
