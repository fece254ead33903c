#include "ztclient/session/ScratchFolder.h"

#include <random>

#include "tovinCore/Exception.h"
#include "tovinCore/platform/Paths.h"
#include "ztcore/ztFile.h"

namespace {

constexpr int attempts = 100;

}  // namespace

ScratchFolder::ScratchFolder() {
  std::random_device random;
  for (int i = 0; i < attempts; ++i) {
    folder_ = std::filesystem::temp_directory_path() / ("ztclient-" + std::to_string(random()));
    if (std::filesystem::create_directory(folder_)) return;
  }
  throw tovin::Exception(L"Unable to make a temporary folder");
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

std::wstring ScratchFolder::write(const std::string& name, std::string_view bytes) const {
  std::wstring path = tovin::platform::wideOf(folder_ / name);
  ztFile file;
  if (!file.Open(path.c_str(), ztFile::ForWriting)) throw tovin::Exception(L"Unable to write file %ls", path);
  file.Write(bytes.data(), bytes.size());
  return path;
}

std::wstring ScratchFolder::shown(std::wstring message) const {
  const std::wstring before = tovin::platform::wideOf(folder_ / "");
  for (size_t at = 0; (at = message.find(before, at)) != std::wstring::npos;)
    message.erase(at, before.size());
  return message;
}
