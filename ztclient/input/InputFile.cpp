#include "ztclient/input/InputFile.h"

#include <filesystem>

#include "tovinCore/Exception.h"
#include "tovinCore/Wipe.h"
#include "tovinCore/platform/Environment.h"
#include "tovinCore/platform/Files.h"
#include "tovinCore/platform/Paths.h"
#include "ztclient/input/GivenNames.h"
#include "ztclient/input/Source.h"
#include "ztclient/terminal/Messages.h"
#include "ztcore/ztFile.h"

namespace platform = tovin::platform;

namespace {

constexpr size_t pieceSize = 1 << 16;
constexpr size_t longestText = size_t{16} << 20;

// What comes out of a pipe can be read once and from the front only.
bool isPipe(const std::string& name) {
  std::error_code ignored;
  return std::filesystem::is_fifo(platform::pathOf(name), ignored);
}

[[noreturn]] void refuseKeeping() {
  const std::wstring reason = platform::lastFailure();
  tovin::Exception failure(L"Unable to make a temporary file, TMPDIR names the folder");
  throw failure.setFile(platform::temporaryFolder()).setReason(reason);
}

}  // namespace

int64_t lengthOf(const wchar_t* name) {
  ztFile file;
  return file.Open(name, ztFile::ForReading) ? file.GetLength() : 0;
}

InputFile::InputFile(const std::string& given) : name_(platform::fileName(given)) {
  if (given != "-" && !isPipe(given)) {
    messages::note("reads " + given);
    return;
  }
  Source source(given);
  keep(name_);
  char piece[pieceSize];
  while (const size_t count = source.read(piece, sizeof piece)) write(piece, count);
}

InputFile::InputFile(std::string_view bytes, const std::wstring& shown) {
  keep(shown);
  write(bytes.data(), bytes.size());
}

void InputFile::keep(std::wstring shown) {
  kept_ = platform::createNameless(platform::temporaryFolder(), name_);
  if (kept_ == -1) refuseKeeping();
  givenNames::add(name_, shown);
}

void InputFile::write(const char* bytes, size_t count) const {
  while (count > 0) {
    const int64_t put = platform::writeFile(kept_, bytes, count);
    if (put <= 0) refuseKeeping();
    bytes += put;
    count -= static_cast<size_t>(put);
  }
}

uint64_t InputFile::length() const { return static_cast<uint64_t>(lengthOf(name())); }

InputFile::~InputFile() {
  if (kept_ != -1) platform::closeFile(kept_);
}

std::string readUpTo(const std::string& given, uint64_t most) {
  Source source(given);
  std::string bytes;
  std::string piece(pieceSize, '\0');
  while (const size_t count = bytes.size() > most ? 0 : source.read(piece.data(), piece.size()))
    bytes.append(piece, 0, count);
  tovin::wipe(piece.data(), piece.size());
  return bytes;
}

std::string readBytes(const std::string& given) {
  std::string bytes = readUpTo(given, longestText);
  if (bytes.size() > longestText)
    throw tovin::Exception(L"The file has more than 16 MiB").setFile(platform::fileName(given));
  return bytes;
}

std::string firstLineOf(const std::string& given) {
  std::string bytes = readBytes(given);
  const size_t end = bytes.find('\n');
  std::string line = bytes.substr(0, end);
  if (end != std::string::npos && line.ends_with('\r')) line.pop_back();
  tovin::wipe(bytes.data(), bytes.size());
  return line;
}
