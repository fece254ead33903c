#include "ztclient/InputFile.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"

namespace {

constexpr int attempts = 100;

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
    if (OpenFile file{std::fopen(name.c_str(), "wbx")}) return file;
  }
  throw tovin::Exception(L"Unable to keep standard input in a file");
}

void copyStandardInput(std::FILE* out) {
  char piece[1 << 16];
  while (const size_t count = std::fread(piece, 1, sizeof piece, stdin)) {
    if (std::fwrite(piece, 1, count, out) != count)
      throw tovin::Exception(L"Unable to keep standard input in a file");
  }
  if (std::fflush(out) != 0) throw tovin::Exception(L"Unable to keep standard input in a file");
}

}  // namespace

InputFile::InputFile(const std::string& given) : name_(tovin::utf8ToWide(given)) {
  if (given != "-") return;
  const OpenFile file = createTemporary(kept_);
  name_ = tovin::utf8ToWide(kept_);
  try {
    copyStandardInput(file.get());
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
    message.replace(at, name_.size(), L"-");
  }
  return message;
}
