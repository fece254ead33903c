#include "ztclient/InputFile.h"

#include <cstdio>
#include <filesystem>
#include <random>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Files.h"

namespace {

constexpr int attempts = 100;

namespace platform = tovin::platform;

[[noreturn]] void fail() { throw tovin::Exception(L"Unable to keep standard input in a file"); }

// A new file that nobody else has opened.
class TemporaryFile {
 public:
  explicit TemporaryFile(std::filesystem::path& path) {
    std::random_device random;
    for (int i = 0; i < attempts && handle_ == -1; ++i) {
      path = std::filesystem::temp_directory_path() / ("ztclient-" + std::to_string(random()));
      handle_ = platform::openFile(tovin::utf8ToWide(path.string()).c_str(), platform::OpenMode::create);
    }
    if (handle_ == -1) fail();
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() { platform::closeFile(handle_); }

  void write(const char* bytes, size_t count) const {
    while (count > 0) {
      const int64_t put = platform::writeFile(handle_, bytes, count);
      if (put <= 0) fail();
      bytes += put;
      count -= static_cast<size_t>(put);
    }
  }

 private:
  intptr_t handle_ = -1;
};

void copyStandardInput(const TemporaryFile& out) {
  char piece[1 << 16];
  while (const size_t count = std::fread(piece, 1, sizeof piece, stdin)) out.write(piece, count);
}

}  // namespace

InputFile::InputFile(const std::string& given) : name_(tovin::utf8ToWide(given)) {
  if (given != "-") return;
  try {
    copyStandardInput(TemporaryFile(kept_));
  } catch (...) {
    removeKept();
    throw;
  }
  name_ = tovin::utf8ToWide(kept_.string());
}

InputFile::~InputFile() { removeKept(); }

void InputFile::removeKept() const noexcept {
  std::error_code ignored;
  if (!kept_.empty()) std::filesystem::remove(kept_, ignored);
}

std::wstring InputFile::shown(std::wstring message) const {
  if (kept_.empty()) return message;
  for (size_t at = 0; (at = message.find(name_, at)) != std::wstring::npos; ++at) {
    message.replace(at, name_.size(), L"-");
  }
  return message;
}
