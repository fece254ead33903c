// The comparison of files that are no text.
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "tovinCore/Exception.h"
#include "tovinCore/Guard.h"
#include "tovinCore/Units.h"
#include "ztbaseclient/tools/CDiffFiles.h"
#include "ztcore/ztFile.h"

using tovin::DiffErrorException;

namespace {

// Sizes are compared block by block, before the bytes of the block: of files of different sizes it shows in
// the report how far they were read. What is read at once is a number of whole blocks.
constexpr unsigned blockSize = 255;
constexpr unsigned pieceSize = 512 * blockSize;

void open(ztFile& file, const wchar_t* name) {
  if (!file.Open(name, ztFile::ForReading)) throw ztFile::OpenFailure(L"Unable to open file %ls", name);
}

// The report is 8-bit text.
void checkName(const wchar_t* name) {
  for (; *name; ++name) {
    tovin::forUnits(static_cast<uint32_t>(*name), [](char16_t unit) {
      if (unit > 0xFF) throw tovin::Exception(L"Unable to convert character 0x%x", unit);
    });
  }
}

[[noreturn]] void fail(const std::wstring& finding, const wchar_t* file1, const wchar_t* file2) {
  checkName(file1);
  checkName(file2);
  throw DiffErrorException(L"%ls\n\tFile1: %ls\n\tFile2: %ls", finding, file1, file2);
}

// Files read side by side, a piece at a time.
struct Piece {
  std::unique_ptr<unsigned char[]> bytes = std::make_unique_for_overwrite<unsigned char[]>(pieceSize);
  unsigned size = 0;

  void read(ztFile& file) { size = file.Read(bytes.get(), pieceSize); }
  unsigned blockAt(unsigned start) const { return std::min(blockSize, size - std::min(start, size)); }
};

bool same(const Piece& a, const Piece& b) {
  return a.size == b.size && std::memcmp(a.bytes.get(), b.bytes.get(), a.size) == 0;
}

std::wstring sizeFinding(int64_t size1, int64_t size2) {
  return tovin::format(L"Binary files differ in size. %d bytes read from file1 and %d bytes read from file2.",
                       size1, size2);
}

std::wstring byteFinding(int64_t offset, unsigned byte1, unsigned byte2) {
  return tovin::format(L"Binary files differ at byte %d.  Byte from file1: %u.  Byte from file2: %u", offset,
                       byte1, byte2);
}

// What is wrong with the first block that differs; there is one.
std::wstring findingIn(const Piece& a, const Piece& b, int64_t offset) {
  for (unsigned start = 0;; start += blockSize) {
    const unsigned size1 = a.blockAt(start), size2 = b.blockAt(start);
    if (size1 != size2) return sizeFinding(offset + start + size1, offset + start + size2);
    for (unsigned at = start; at < start + size1; ++at) {
      if (a.bytes[at] != b.bytes[at]) return byteFinding(offset + at, a.bytes[at], b.bytes[at]);
    }
  }
}

}  // namespace

bool CDiffFiles::CompareFilesBinary(const wchar_t* file1, const wchar_t* file2) {
  return tovin::guarded({ClassName, "CompareFilesBinary"}, [&] {
    ztFile in1, in2;
    open(in1, file1);
    open(in2, file2);
    Piece piece1, piece2;
    for (int64_t offset = 0;; offset += pieceSize) {
      piece1.read(in1);
      piece2.read(in2);
      if (!same(piece1, piece2)) fail(findingIn(piece1, piece2, offset), file1, file2);
      if (piece1.size == 0) return true;
      Compared(offset + piece1.size);
    }
  });
}
