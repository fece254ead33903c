// A file sent to the server's upload script, with its progress.
//
//     example_upload compounds.txt https://atlas:9943/perlbin/upload.pl "$session"
#include <filesystem>
#include <iostream>

#include "tovinCore/Utf8.h"
#include "ztbaseclient/ztbaseclient.h"

namespace {

void showProgress(uint64_t done, uint64_t length) {
  std::cerr << '\r' << (length > 0 ? 100 * done / length : 100) << " %" << std::flush;
}

void run(const char* file, const char* url, const char* session) {
  const std::wstring path = tovin::utf8ToWide(file);
  const std::wstring name = tovin::utf8ToWide(std::filesystem::path(file).filename().string());
  ztSoapUtils::UploadViaCGI(path.c_str(), name.c_str(), nullptr, tovin::utf8ToWide(session).c_str(), true,
                            tovin::utf8ToWide(url).c_str(), showProgress);
  std::cerr << '\n';
  std::cout << "sent " << file << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: example_upload FILE URL SESSION\n";
    return 2;
  }
  try {
    run(argv[1], argv[2], argv[3]);
    return 0;
  } catch (const tovin::Exception& e) {
    std::cerr << '\n' << e.what() << '\n';  // with the server's reason, when it gave one
    return 1;
  }
}
