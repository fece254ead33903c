#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Files.h"

namespace tovin::platform {
namespace {

int flagsOf(OpenMode mode) {
  switch (mode) {
    case OpenMode::readRegular:
      return O_RDONLY | O_NONBLOCK;  // a pipe that nobody writes to is not waited for
    case OpenMode::write:
      return O_WRONLY | O_CREAT | O_TRUNC;
    case OpenMode::append:
      return O_WRONLY | O_CREAT | O_APPEND;
    case OpenMode::probe:
      return O_WRONLY;
    case OpenMode::create:
      return O_WRONLY | O_CREAT | O_EXCL;
    default:
      return O_RDONLY;
  }
}

mode_t permissionsOf(OpenMode mode) { return mode == OpenMode::create ? 0600 : 0666; }

int descriptor(intptr_t handle) { return static_cast<int>(handle); }

template <class Call>
int64_t uninterrupted(Call&& call) {
  int64_t result;
  do result = call();
  while (result < 0 && errno == EINTR);
  return result;
}

bool isWanted(int file, OpenMode mode) {
  struct stat facts;
  if (::fstat(file, &facts) != 0) return false;
  return mode == OpenMode::readRegular ? S_ISREG(facts.st_mode) : !S_ISDIR(facts.st_mode);
}

}  // namespace

intptr_t openFile(const wchar_t* name, OpenMode mode) {
  const std::string path = wideToUtf8(name);
  const int64_t file =
      uninterrupted([&] { return ::open(path.c_str(), flagsOf(mode) | O_CLOEXEC, permissionsOf(mode)); });
  if (file >= 0 && !isWanted(descriptor(file), mode)) {
    closeFile(file);
    return -1;
  }
  return file;
}

void closeFile(intptr_t handle) noexcept { ::close(descriptor(handle)); }

int64_t readFile(intptr_t handle, void* bytes, size_t count) noexcept {
  return uninterrupted([&] { return ::read(descriptor(handle), bytes, count); });
}

int64_t writeFile(intptr_t handle, const void* bytes, size_t count) noexcept {
  return uninterrupted([&] { return ::write(descriptor(handle), bytes, count); });
}

bool seekFile(intptr_t handle, int64_t position) noexcept {
  if (::lseek(descriptor(handle), position, SEEK_SET) >= 0) return true;
  // A place that the file system has not got: no file reaches it, and there is nothing to read.
  return position > 0 && errno == EINVAL && ::lseek(descriptor(handle), 0, SEEK_END) >= 0;
}

int64_t fileLength(intptr_t handle) noexcept {
  struct stat facts;
  return ::fstat(descriptor(handle), &facts) == 0 ? facts.st_size : -1;
}

// Here the network is part of the one tree of files.
std::wstring networkShareOf(std::wstring_view) { return {}; }

}  // namespace tovin::platform
