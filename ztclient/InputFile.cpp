#include "ztclient/InputFile.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"

namespace {

using std::filesystem::perms;

constexpr int attempts = 100;

[[noreturn]] void refuse() { throw tovin::Exception(L"Unable to keep the input in a file"); }

struct Close {
  void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, Close>;

// A new file that nobody else has opened.
OpenFile createTemporary(std::string& name) {
  std::random_device random;
  for (int i = 0; i < attempts; ++i) {
    const auto path = std::filesystem::temp_directory_path() / ("ztclient-" + std::to_string(random()));
    name = path.string();
    if (OpenFile file{std::fopen(name.c_str(), "wbx")}) {
      std::filesystem::permissions(path, perms::owner_read | perms::owner_write);
      return file;
    }
  }
  refuse();
}

void copy(std::FILE* in, std::FILE* out) {
  char piece[1 << 16];
  while (const size_t count = std::fread(piece, 1, sizeof piece, in)) {
    if (std::fwrite(piece, 1, count, out) != count) refuse();
  }
  if (std::fflush(out) != 0) refuse();
}

// What comes out of a pipe can be read once and from the front only.
bool isPipe(const std::string& name) {
  std::error_code ignored;
  return std::filesystem::is_fifo(name, ignored);
}

}  // namespace

InputFile::InputFile(const std::string& given) : name_(tovin::utf8ToWide(given)) {
  const bool standardInput = given == "-";
  if (!standardInput && !isPipe(given)) return;
  const OpenFile file = createTemporary(kept_);
  name_ = tovin::utf8ToWide(kept_);
  shown_ = tovin::utf8ToWide(given);
  try {
    const OpenFile pipe(standardInput ? nullptr : std::fopen(given.c_str(), "rb"));
    if (!standardInput && !pipe) throw tovin::Exception(L"Unable to open file %ls", shown_);
    copy(standardInput ? stdin : pipe.get(), file.get());
  } catch (...) {
    std::remove(kept_.c_str());
    throw;
  }
}

InputFile::~InputFile() {
  if (!kept_.empty()) std::remove(kept_.c_str());
}

std::wstring InputFile::shown(std::wstring message) const {
  if (kept_.empty()) return message;
  for (size_t at = 0; (at = message.find(name_, at)) != std::wstring::npos; ++at) {
    message.replace(at, name_.size(), shown_);
  }
  return message;
}
