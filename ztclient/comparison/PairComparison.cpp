#include "ztclient/comparison/PairComparison.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>

#include "tovinCore/Exception.h"
#include "tovinCore/platform/Files.h"
#include "ztbaseclient/tools/CDiffFiles.h"
#include "ztclient/answers/DifferenceText.h"
#include "ztclient/terminal/Messages.h"

namespace platform = tovin::platform;
using differences::Field;
using differences::Line;
using Verdict = PairResult::Verdict;

namespace {

constexpr size_t pieceSize = 1 << 16;
constexpr size_t firstLines = 10;
constexpr size_t mostOfLine = 200;

struct BinaryProbe : CDiffFiles {
  using CDiffFiles::FileIsBinary;
};

class Bytes {
 public:
  explicit Bytes(const wchar_t* name)
      : name_(name), handle_(platform::openFile(name, platform::OpenMode::readRegular)) {
    if (handle_ == -1) fail(L"Unable to open file %ls");
  }
  Bytes(const Bytes&) = delete;
  Bytes& operator=(const Bytes&) = delete;
  ~Bytes() {
    if (handle_ != -1) platform::closeFile(handle_);
  }

  // Fills the room, but at the end of the file.
  size_t read(char* room, size_t size) const {
    size_t count = 0;
    while (count < size) {
      const int64_t got = platform::readFile(handle_, room + count, size - count);
      if (got < 0) fail(L"Unable to read file %ls");
      if (got == 0) break;
      count += static_cast<size_t>(got);
    }
    return count;
  }

 private:
  [[noreturn]] void fail(const wchar_t* pattern) const {
    const std::wstring reason = platform::lastFailure();
    tovin::Exception failure(pattern, name_);
    throw failure.setFile(name_).setReason(reason);
  }

  const wchar_t* name_;
  intptr_t handle_;
};

// Where the bytes part, from 0; nothing for files of the same bytes.
std::optional<uint64_t> firstDifference(const wchar_t* file1, const wchar_t* file2) {
  const Bytes bytes1(file1), bytes2(file2);
  const auto room = std::make_unique_for_overwrite<char[]>(2 * pieceSize);
  char* piece1 = room.get();
  char* piece2 = piece1 + pieceSize;
  for (uint64_t done = 0;; done += pieceSize) {
    const size_t count1 = bytes1.read(piece1, pieceSize), count2 = bytes2.read(piece2, pieceSize);
    const size_t both = std::min(count1, count2);
    if (std::memcmp(piece1, piece2, both) != 0)
      return done + static_cast<size_t>(std::mismatch(piece1, piece1 + both, piece2).first - piece1);
    if (count1 != count2) return done + both;
    if (count1 < pieceSize) return std::nullopt;
  }
}

std::string shortened(std::string_view text) {
  if (text.size() <= mostOfLine) return std::string(text);
  size_t end = mostOfLine;
  while (end > 0 && (text[end] & 0xC0) == 0x80) --end;  // the rest of a character
  return std::string(text.substr(0, end)) + "…";
}

std::string describe(const Line& line) {
  if (line.kind == Line::Kind::Removed)
    return "line " + std::to_string(line.line1) + " removed: " + shortened(line.text1);
  if (line.kind == Line::Kind::Added)
    return "line " + std::to_string(line.line2) + " added: " + shortened(line.text2);
  std::string text = "line " + std::to_string(line.line1);
  if (line.line1 != line.line2) text += " and " + std::to_string(line.line2);
  const Field* shown = &line.fields.front();
  for (const Field& field : line.fields) {
    if (shown->within && !field.within) shown = &field;
  }
  text += ", " + differenceText::nameOf(*shown) + ": \"" + shortened(shown->text1) + "\" and \"" +
          shortened(shown->text2) + '"';
  return shown->kind == Field::Kind::Number ? text + ", " + differenceText::measuresOf(*shown) : text;
}

bool isDifferent(const Line& line) {
  return line.kind != Line::Kind::Changed ||
         std::ranges::any_of(line.fields, [](const Field& field) { return !field.within; });
}

}  // namespace

const char* wordOf(Verdict verdict) noexcept {
  switch (verdict) {
    case Verdict::equal:
      return "equal";
    case Verdict::within:
      return "within tolerance";
    case Verdict::different:
      return "different";
    case Verdict::onlyFirst:
      return "only in the first";
    case Verdict::onlySecond:
      return "only in the second";
    case Verdict::unreadable:
      return "unreadable";
  }
  return "";
}

PairResult PairComparison::compare(const wchar_t* file1, const wchar_t* file2) const {
  try {
    return compareOrThrow(file1, file2);
  } catch (const tovin::Exception& e) {
    return {Verdict::unreadable, messages::textOf(e)};
  } catch (const std::exception& e) {
    return {Verdict::unreadable, e.what()};
  }
}

std::string PairComparison::tolerance() const {
  return binary_ ? "none, by bytes" : differenceText::toleranceOf(how_);
}

PairResult PairComparison::compareOrThrow(const wchar_t* file1, const wchar_t* file2) const {
  const std::optional<uint64_t> place = firstDifference(file1, file2);
  if (!place) return {};
  if (!binary_ && !BinaryProbe().FileIsBinary(file1)) return compareText(file1, file2);
  return {Verdict::different, "the bytes differ from byte " + std::to_string(*place) + " on"};
}

PairResult PairComparison::compareText(const wchar_t* file1, const wchar_t* file2) const {
  PairResult result;
  result.sums = differences::find(file1, file2, how_, [&](const Line& line) {
    if (!isDifferent(line)) return;
    if (result.first.size() < firstLines)
      result.first.push_back(describe(line));
    else
      ++result.more;
  });
  if (result.sums.isDifferent())
    result.verdict = Verdict::different;
  else if (result.sums.within > 0)
    result.verdict = Verdict::within;
  return result;
}
