// Runs a fuzz target over the files of its corpus, for compilers without a fuzzing engine: what was found
// once is then checked by every build.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <vector>

namespace fs = std::filesystem;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<fs::path> filesIn(const fs::path& place) {
  if (fs::is_regular_file(place)) return {place};
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(place)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

void replay(const fs::path& file) {
  // Named first: if the target crashes, the last line says on which input.
  std::printf("%s\n", file.string().c_str());
  std::fflush(stdout);
  // A block of exactly this size, so that the address sanitizer sees a read behind the input.
  const std::size_t size = fs::file_size(file);
  const auto data = std::make_unique<std::uint8_t[]>(size);
  std::ifstream stream(file, std::ios::binary);
  if (!stream.read(reinterpret_cast<char*>(data.get()), static_cast<std::streamsize>(size))) {
    throw std::runtime_error("cannot be read");
  }
  LLVMFuzzerTestOneInput(data.get(), size);
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t count = 0;
  try {
    for (int i = 1; i < argc; ++i) {
      for (const fs::path& file : filesIn(argv[i])) {
        replay(file);
        ++count;
      }
    }
  } catch (const std::exception& trouble) {
    std::fprintf(stderr, "%s: %s\n", argv[0], trouble.what());
    return 1;
  }
  if (count == 0) {
    std::fprintf(stderr, "%s: no input; usage: %s CORPUS...\n", argv[0], argv[0]);
    return 1;
  }
  return 0;
}
