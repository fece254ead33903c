// Two texts are compared: the input up to the first byte FF is the first, the rest the second. Whatever they
// are, the end is an answer or a framework exception, a text is equal to itself, and the search for all
// differences finds one that counts exactly where the comparison does (but for zero bytes, which end a line).
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/tools/CDiffFiles.h"
#include "ztbaseclient/tools/FileDifferences.h"

namespace {

// A folder of this process.
struct Folder {
  std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("fuzz_diff_" + std::to_string(std::random_device()()));
  Folder() { std::filesystem::create_directory(path); }
  ~Folder() { std::filesystem::remove_all(path); }

  std::wstring write(const char* leaf, std::string_view bytes) const {
    std::ofstream(path / leaf, std::ios::binary) << bytes;
    return tovin::utf8ToWide((path / leaf).string());
  }
};

enum class Outcome { equal, different, refused };

Outcome compare(const std::wstring& file1, const std::wstring& file2, int tolerance) {
  try {
    CDiffFiles().CompareFiles(file1.c_str(), file2.c_str(), tolerance);
    return Outcome::equal;
  } catch (const tovin::DiffWarningException&) {
    return Outcome::equal;
  } catch (const tovin::DiffErrorException&) {
    return Outcome::different;
  } catch (const tovin::Exception&) {
    return Outcome::refused;
  }
}

Outcome findAll(const std::wstring& file1, const std::wstring& file2, int tolerance) {
  try {
    const auto sums =
        differences::find(file1.c_str(), file2.c_str(), {.tolerance = tolerance}, [](const auto&) {});
    return sums.isDifferent() ? Outcome::different : Outcome::equal;
  } catch (const tovin::Exception&) {
    return Outcome::refused;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Folder folder;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::size_t cut = std::min(input.find('\xFF'), size);
  const std::wstring file1 = folder.write("1", input.substr(0, cut));
  const std::wstring file2 = folder.write("2", input.substr(std::min(cut + 1, size)));
  for (int tolerance : {0, 5}) {
    const Outcome plain = compare(file1, file2, tolerance), all = findAll(file1, file2, tolerance);
    if (plain != all && input.find('\0') == input.npos) std::abort();
  }
  if (compare(file1, folder.write("3", input.substr(0, cut)), 5) != Outcome::equal) std::abort();
  return 0;
}
