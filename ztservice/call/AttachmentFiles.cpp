#include "ztservice/call/AttachmentFiles.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string_view>

#include "tovinCore/Units.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Paths.h"
#include "tovinCore/platform/WholeFile.h"
#include "ztservice/Error.h"

namespace ztservice::call {

namespace {

namespace platform = tovin::platform;

char folded(char c) {
  return static_cast<char>(tovin::foldAscii(static_cast<uint32_t>(static_cast<unsigned char>(c))));
}

// Names that are devices on Windows, whatever follows the first point.
bool isDevice(std::string_view name) {
  std::string stem(name.substr(0, name.find('.')));
  std::ranges::transform(stem, stem.begin(), folded);
  for (const std::string_view device : {"con", "prn", "aux", "nul"}) {
    if (stem == device) return true;
  }
  return stem.size() == 4 && (stem.starts_with("com") || stem.starts_with("lpt")) && stem[3] >= '0' &&
         stem[3] <= '9';
}

}  // namespace

AttachmentFiles::AttachmentFiles(std::string folder) : folder_(std::move(folder)) {
  std::error_code error;
  std::filesystem::create_directories(platform::pathOf(folder_), error);
  if (error || !std::filesystem::is_directory(platform::pathOf(folder_), error))
    throw Error({folder_}, "is no folder, and cannot be made one");
}

std::string AttachmentFiles::cleaned(const std::string& name) {
  constexpr size_t longest = 100;
  constexpr std::string_view refused = "<>:\"|?*";
  std::string out = name.substr(name.find_last_of("/\\") + 1);
  bool cutShort = false;
  if (!tovin::isValidUtf8(out, cutShort)) return {};
  std::erase_if(out, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
  std::ranges::replace_if(
      out, [&](char c) { return refused.find(c) != refused.npos; }, '_');
  while (out.starts_with('.') || out.starts_with(' ')) out.erase(0, 1);
  while (out.size() > longest || !tovin::isValidUtf8(out, cutShort)) out.pop_back();
  while (out.ends_with('.') || out.ends_with(' ')) out.pop_back();
  return isDevice(out) ? '_' + out : out;
}

std::string AttachmentFiles::nameFor(const MimePart& part) {
  std::string name = cleaned(part.fileName);
  if (name.empty()) name = cleaned(part.id);
  if (name.empty()) name = "attachment";
  const size_t point = std::min(name.rfind('.'), name.size());
  const std::lock_guard guard(lock_);
  for (size_t number = 1;; ++number) {
    const std::string file = folder_ + '/' + name.substr(0, point) +
                             (number == 1 ? "" : '-' + std::to_string(number)) + name.substr(point);
    if (platform::pathExists(platform::fileName(file).c_str()) || !given_.insert(file).second) continue;
    return file;
  }
}

}  // namespace ztservice::call
