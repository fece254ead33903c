#include "ztservice/load/OpenFile.h"

#include <algorithm>

#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Files.h"
#include "tovinCore/platform/Paths.h"
#include "ztservice/Error.h"

namespace ztservice::parse {

namespace platform = tovin::platform;

void failFor(const std::string& path, const char* otherwise) {
  const std::string reason = tovin::wideToUtf8(platform::lastFailure());
  throw Error({path}, reason.empty() ? otherwise : reason);
}

OpenFile::OpenFile(const std::string& path)
    : path_(path),
      handle_(platform::openFile(platform::fileName(path).c_str(), platform::OpenMode::readRegular)) {
  if (handle_ == -1) failFor(path, "cannot be read");
}

OpenFile::~OpenFile() { platform::closeFile(handle_); }

uint64_t OpenFile::length() const {
  const int64_t length = platform::fileLength(handle_);
  if (length < 0) failFor(path_, "cannot be read");
  return static_cast<uint64_t>(length);
}

size_t OpenFile::read(char* out, size_t count) {
  const int64_t got = platform::readFile(handle_, out, count);
  if (got < 0) failFor(path_, "cannot be read");
  return static_cast<size_t>(got);
}

std::string bytesOf(const std::string& path, uint64_t limit) {
  OpenFile file(path);
  // One more than the file has, so that its end is met at once.
  const size_t piece = static_cast<size_t>(std::clamp<uint64_t>(file.length() + 1, 1 << 12, 1 << 20));
  std::string bytes;
  while (bytes.size() <= limit) {
    const size_t before = bytes.size();
    bytes.resize(before + piece);
    const size_t got = file.read(bytes.data() + before, piece);
    bytes.resize(before + got);
    if (got == 0) break;
  }
  return bytes;
}

}  // namespace ztservice::parse
