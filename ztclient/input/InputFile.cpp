#include "ztclient/input/InputFile.h"

#include <cstdio>
#include <filesystem>
#include <random>
#include <utility>
#include <vector>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Files.h"
#include "tovinCore/platform/Paths.h"
#include "ztcore/ztFile.h"

namespace {

constexpr int attempts = 100;
constexpr unsigned pieceSize = 1 << 16;

namespace platform = tovin::platform;

[[noreturn]] void refuse() { throw tovin::Exception(L"Unable to keep the input in a file"); }

// A new file that nobody else has opened.
class TemporaryFile {
 public:
  explicit TemporaryFile(std::filesystem::path& path) {
    std::random_device random;
    std::filesystem::path name;
    for (int i = 0; i < attempts && handle_ == -1; ++i) {
      name = std::filesystem::temp_directory_path() / ("ztclient-" + std::to_string(random()));
      handle_ = platform::openFile(platform::wideOf(name).c_str(), platform::OpenMode::create);
    }
    if (handle_ == -1) refuse();
    path = name;
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() { platform::closeFile(handle_); }

  void write(const char* bytes, size_t count) const {
    while (count > 0) {
      const int64_t put = platform::writeFile(handle_, bytes, count);
      if (put <= 0) refuse();
      bytes += put;
      count -= static_cast<size_t>(put);
    }
  }

 private:
  intptr_t handle_ = -1;
};

void copyStandardInput(const TemporaryFile& out) {
  char piece[pieceSize];
  while (const size_t count = std::fread(piece, 1, sizeof piece, stdin)) out.write(piece, count);
}

void copyPipe(const std::wstring& name, const TemporaryFile& out) {
  ztFile in;
  if (!in.Open(name.c_str(), ztFile::ForReading)) throw tovin::Exception(L"Unable to open file %ls", name);
  unsigned char piece[pieceSize];
  while (const unsigned count = in.Read(piece, sizeof piece))
    out.write(reinterpret_cast<char*>(piece), count);
}

// What comes out of a pipe can be read once and from the front only.
bool isPipe(const std::string& name) {
  std::error_code ignored;
  return std::filesystem::is_fifo(platform::pathOf(name), ignored);
}

// Of the files that are kept, and as they were given.
std::vector<std::pair<std::wstring, std::wstring>>& names() {
  static std::vector<std::pair<std::wstring, std::wstring>> names;
  return names;
}

}  // namespace

int64_t lengthOf(const wchar_t* name) {
  ztFile file;
  return file.Open(name, ztFile::ForReading) ? file.GetLength() : 0;
}

InputFile::InputFile(const std::string& given) : name_(tovin::utf8ToWide(given)) {
  const bool standardInput = given == "-";
  if (!standardInput && !isPipe(given)) return;
  try {
    const TemporaryFile file(kept_);
    if (standardInput)
      copyStandardInput(file);
    else
      copyPipe(name_, file);
  } catch (...) {
    removeKept();
    throw;
  }
  name_ = platform::wideOf(kept_);
  names().emplace_back(name_, tovin::utf8ToWide(given));
}

uint64_t InputFile::length() const { return static_cast<uint64_t>(lengthOf(name())); }

InputFile::~InputFile() { removeKept(); }

void InputFile::removeKept() const noexcept {
  std::error_code ignored;
  if (!kept_.empty()) std::filesystem::remove(kept_, ignored);
}

std::wstring InputFile::asGiven(std::wstring message) {
  for (const auto& [kept, given] : names()) {
    for (size_t at = 0; (at = message.find(kept, at)) != std::wstring::npos; ++at) {
      message.replace(at, kept.size(), given);
    }
  }
  return message;
}
