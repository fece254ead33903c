// A result file compared with the one that was expected. Exit status 1: they differ.
//
//     example_compare expected.txt result.txt
#include <iostream>

#include "tovinCore/Utf8.h"
#include "ztbaseclient/ztbaseclient.h"

namespace {

// Equality is silence; everything else is an exception, of which one is a mere warning.
int run(const char* expected, const char* result) {
  try {
    CDiffFiles().CompareFiles(tovin::utf8ToWide(expected).c_str(), tovin::utf8ToWide(result).c_str(),
                              CDiffFiles::DefaultTolerance);
    std::cout << "equal\n";
  } catch (const tovin::DiffWarningException& e) {
    std::cout << "near enough: " << tovin::wideToUtf8(e.getMessage()) << '\n';
  } catch (const tovin::DiffErrorException& e) {
    std::cout << tovin::wideToUtf8(e.getMessage()) << '\n';
    return 1;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: example_compare EXPECTED RESULT\n";
    return 2;
  }
  try {
    return run(argv[1], argv[2]);
  } catch (const tovin::Exception& e) {
    std::cerr << e.what() << '\n';  // a file that cannot be read
    return 2;
  }
}
