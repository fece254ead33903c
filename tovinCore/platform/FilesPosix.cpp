#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "tovinCore/platform/Files.h"
#include "tovinCore/platform/Paths.h"

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

// What is wrong with a file that could be opened; 0 for nothing.
int refusalOf(int file, OpenMode mode) {
  struct stat facts;
  if (::fstat(file, &facts) != 0) return errno;
  if (S_ISDIR(facts.st_mode)) return EISDIR;
  return mode == OpenMode::readRegular && !S_ISREG(facts.st_mode) ? EINVAL : 0;
}

}  // namespace

intptr_t openFile(const wchar_t* name, OpenMode mode) {
  const std::string path = fileNameBytes(name);
  const int64_t file =
      uninterrupted([&] { return ::open(path.c_str(), flagsOf(mode) | O_CLOEXEC, permissionsOf(mode)); });
  if (file < 0) return -1;
  const int refusal = refusalOf(descriptor(file), mode);
  if (refusal == 0) return file;
  closeFile(file);
  errno = refusal;
  return -1;
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
intptr_t standardInput() noexcept { return STDIN_FILENO; }
intptr_t standardOutput() noexcept { return STDOUT_FILENO; }

// Not every file system has files without a name: there it is taken away at once.
intptr_t createNameless(const std::wstring& folder, std::wstring& name) {
  const std::string place = fileNameBytes(folder);
  int file = ::open(place.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  if (file < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) {
    std::string path = place + "/ztclient-XXXXXX";
    file = ::mkostemp(path.data(), O_CLOEXEC);
    if (file >= 0) ::unlink(path.c_str());
  }
  if (file >= 0) name = L"/proc/self/fd/" + std::to_wstring(file);
  return file;
}

bool lastFailureMayPass() noexcept {
  switch (errno) {
    case EAGAIN:
    case EBUSY:
    case EINTR:
    case EIO:
    case EMFILE:
    case ENFILE:
    case ENOBUFS:
    case ENOMEM:
    case ENOSPC:
    case ETIMEDOUT:
      return true;
    default:
      return false;
  }
}

std::wstring lastFailure() { return fileName(std::generic_category().message(errno)); }

bool isRegularFile(const wchar_t* name) {
  struct stat facts;
  return ::stat(fileNameBytes(name).c_str(), &facts) == 0 && S_ISREG(facts.st_mode);
}

bool isSameFile(const wchar_t* a, const wchar_t* b) {
  struct stat first, second;
  return ::stat(fileNameBytes(a).c_str(), &first) == 0 && ::stat(fileNameBytes(b).c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

FileIdentity identityOf(const wchar_t* name) {
  struct stat facts;
  if (::stat(fileNameBytes(name).c_str(), &facts) != 0) return {};
  return {static_cast<uint64_t>(facts.st_dev), static_cast<uint64_t>(facts.st_ino)};
}

}  // namespace tovin::platform
