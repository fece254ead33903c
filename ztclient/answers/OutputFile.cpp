#include "ztclient/answers/OutputFile.h"

#include <iostream>

#include "tovinCore/Exception.h"
#include "tovinCore/platform/Files.h"
#include "tovinCore/platform/Paths.h"
#include "tovinCore/platform/WholeFile.h"
#include "ztclient/arguments/Misuse.h"

namespace platform = tovin::platform;

void outputFile::place(const std::string& file, std::string_view bytes) {
  if (file == "-") {
    std::cout << bytes;
    return;
  }
  const std::wstring name = platform::fileName(file);
  if (platform::placeFile(name.c_str(), bytes)) return;
  const std::wstring reason = platform::lastFailure();
  throw tovin::Exception(L"Unable to write file %ls", name).setFile(name).setReason(reason);
}

void outputFile::requireAnother(const char* option, const std::string& file,
                                const std::vector<std::string>& read) {
  if (file.empty() || file == "-") return;
  const std::wstring name = platform::fileName(file);
  for (const std::string& each : read) {
    const std::wstring other = platform::fileName(each);
    if (each != "-" && platform::isRegularFile(other.c_str()) &&
        platform::isSameFile(other.c_str(), name.c_str()))
      throw Misuse(std::string(option) + ": " + file + " is the document itself");
  }
}
