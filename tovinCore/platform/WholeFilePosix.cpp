#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

#include "tovinCore/platform/Files.h"
#include "tovinCore/platform/Paths.h"
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
  return true;
}

// Keeps the reason of the first failure.
bool closeWritten(int file, bool written) {
  const int reason = errno;
  const bool closed = ::close(file) == 0;
  if (!written) errno = reason;
  return written && closed;
}

bool finish(int file, bool written, const std::string& temporary, const fs::path& target) {
  if (closeWritten(file, written && ::fsync(file) == 0) && ::rename(temporary.c_str(), target.c_str()) == 0)
    return true;
  const int reason = errno;
  ::unlink(temporary.c_str());
  errno = reason;
  return false;
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
  return finish(file, writeAll(file, bytes), temporary, target);
}

// Where a chain of links ends, be there a file or not.
fs::path endOfLinks(fs::path name) {
  constexpr int longestChain = 40;
  std::error_code none;
  for (int i = 0; i < longestChain && fs::is_symlink(name, none); ++i)
    name = name.parent_path() / fs::read_symlink(name, none);
  return name;
}

// A new file beside another; -1 when there can be none.
int createBeside(const fs::path& target, std::string& name) {
  constexpr int attempts = 100;
  std::random_device random;
  for (int i = 0; i < attempts; ++i) {
    name = target.native() + "." + std::to_string(random());
    const int file = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file >= 0 || errno != EEXIST) return file;
  }
  return -1;
}

}  // namespace

bool pathExists(const wchar_t* name) {
  struct stat facts;
  return ::lstat(fileNameBytes(name).c_str(), &facts) == 0;
}

bool placeFile(const wchar_t* name, std::string_view bytes) {
  const fs::path target = endOfLinks(fileNameBytes(name));
  struct stat facts;
  const bool there = ::stat(target.c_str(), &facts) == 0;
  if (there && !S_ISREG(facts.st_mode)) {
    const auto file = static_cast<int>(openFile(name, OpenMode::write));
    return file >= 0 && closeWritten(file, writeAll(file, bytes));
  }
  if (there && ::access(target.c_str(), W_OK) != 0) return false;
  std::string temporary;
  const int file = createBeside(target, temporary);
  if (file < 0) return false;
  if (there) copyMode(file, target);
  return finish(file, writeAll(file, bytes), temporary, target);
}

bool replaceFile(const wchar_t* name, std::string_view bytes) {
  return replace(targetOf(fileNameBytes(name)), bytes);
}

}  // namespace tovin::platform
