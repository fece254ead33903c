// Two texts are compared: the input up to the first byte FF is the first, the rest the second. Whatever they
// are, the end is an answer or a framework exception, and a text is equal to itself.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/tools/CDiffFiles.h"

namespace {

// A folder of this process.
struct Folder {
  std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("fuzz_diff_" + std::to_string(std::rand()));
  Folder() { std::filesystem::create_directory(path); }
  ~Folder() { std::filesystem::remove_all(path); }

  std::wstring write(const char* leaf, std::string_view bytes) const {
    std::ofstream(path / leaf, std::ios::binary) << bytes;
    return tovin::utf8ToWide((path / leaf).string());
  }
};

bool compare(const std::wstring& file1, const std::wstring& file2, int tolerance) {
  try {
    return CDiffFiles().CompareFiles(file1.c_str(), file2.c_str(), tolerance);
  } catch (const tovin::Exception&) {
    return false;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Folder folder;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::size_t cut = std::min(input.find('\xFF'), size);
  const std::wstring file1 = folder.write("1", input.substr(0, cut));
  const std::wstring file2 = folder.write("2", input.substr(std::min(cut + 1, size)));
  for (int tolerance : {0, 5}) compare(file1, file2, tolerance);
  if (!compare(file1, folder.write("3", input.substr(0, cut)), 5)) std::abort();
  return 0;
}
