#include "ztcore/ztStringReader.h"

#include <algorithm>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "ztcore/ztLineBytes.h"
#include "ztcore/ztLineSkipper.h"
#include "ztcore/ztMemoryStringFile.h"

ztStringReader::ztStringReader(const wchar_t* path, Ending ending)
    : file_(std::make_unique<ztFastReadFile>(path, ending)) {}

ztStringReader::ztStringReader(const ztMemoryStringFile& file) : memory_(&file) {}

ztStringReader::~ztStringReader() = default;

bool ztStringReader::GetLine(tovin::WideString& line) {
  return memory_ ? getMemoryLine(line) : getFileLine(line);
}

bool ztStringReader::getFileLine(tovin::WideString& line) {
  std::string_view text;
  size_t length = 0;
  wasTooLong_ = false;
  if (inLongLine_) passLongLine();
  if (!findLine(text, length)) {
    position_ = std::max(position_, file_->GetPosition());  // behind a mark without text
    return false;
  }
  lines::decode(text, encodingOf(text), line);
  file_->Consume(length);
  position_ = file_->GetPosition();
  return true;
}

// ASCII is the same in all encodings of which it is still unknown which one it is.
ztFile::Encoding ztStringReader::encodingOf(std::string_view text) {
  if (file_->GetEncoding() != ztFile::Encoding::Unknown) return file_->GetEncoding();
  if (tovin::asciiPrefix(text) == text.size()) return ztFile::Encoding::Bytes;
  file_->DetermineEncoding();
  return file_->GetEncoding();
}

// The next line in the window: its text without an end, and how many bytes it takes with it.
bool ztStringReader::findLine(std::string_view& text, size_t& length) {
  size_t searched = 0, end = lines::none;
  do {
    end = lines::findLineFeed(file_->GetWindow(), searched, file_->GetEncoding());
    searched = file_->GetWindow().size();
    searched -= searched % 2;  // half a unit is looked at again
  } while (end == lines::none && searched <= lines::maxBytes && file_->Fill());
  text = file_->GetWindow().substr(0, end);
  if (text.size() > lines::maxBytes) {
    const int64_t begin = file_->GetPosition();
    passLongLine();
    wasTooLong_ = true;
    lines::refuseLong(file_->GetName(), begin);
  }
  hadLineEnd_ = end != lines::none;
  length = text.size() + (!hadLineEnd_ ? 0 : file_->Is16Bit() ? 2 : 1);
  if (hadLineEnd_) lines::dropReturn(text, file_->GetEncoding());
  return length > 0;
}

// The rest of one whose end is not written yet is passed over when it is.
void ztStringReader::passLongLine() {
  inLongLine_ = true;
  do {
    const std::string_view window = file_->GetWindow();
    const size_t end = lines::findLineFeed(window, 0, file_->GetEncoding());
    const size_t unit = file_->Is16Bit() ? 2 : 1;
    inLongLine_ = end == lines::none;
    file_->Consume(inLongLine_ ? window.size() / unit * unit : end + unit);
    position_ = file_->GetPosition();
  } while (inLongLine_ && file_->Fill());
}

bool ztStringReader::getMemoryLine(tovin::WideString& line) {
  if (position_ >= memory_->GetLength()) return false;
  std::wstring_view text = memory_->GetText().substr(static_cast<size_t>(position_));
  const size_t end = text.find(L'\n');
  text = text.substr(0, end);
  hadLineEnd_ = end != std::wstring_view::npos;
  position_ += static_cast<int64_t>(text.size()) + hadLineEnd_;
  if (hadLineEnd_ && text.ends_with(L'\r')) text.remove_suffix(1);
  line = text;
  line += L'\n';
  return true;
}

void ztStringReader::Seek(int64_t position) {
  if (position < 0) throw tovin::Exception(L"Position %d lies before the beginning", position);
  position_ = position;
  inLongLine_ = false;
  plainEnd_ = 0;
  if (file_) file_->Seek(position);
}

int64_t ztStringReader::SkipEqualLines(ztStringReader& a, ztStringReader& b,
                                       const std::function<void(int64_t)>& watch) {
  if (!a.file_ || !b.file_ || a.inLongLine_ || b.inLongLine_) return 0;
  const int64_t count = ztLineSkipper(*a.file_, *b.file_, watch).skip();
  if (count == 0) return 0;
  a.position_ = a.file_->GetPosition();
  b.position_ = b.file_->GetPosition();
  return count;
}

// What of the window, or of as much of its front, is plain. The same bytes are looked at once, however often
// the skipping begins anew.
std::string_view ztStringReader::plainWindow(size_t most) {
  const std::string_view window = file_->GetWindow().substr(0, most);
  const int64_t begin = file_->GetPosition();
  const size_t known = plainEnd_ > begin ? static_cast<size_t>(plainEnd_ - begin) : 0;
  if (known >= window.size()) return window;
  const size_t length = known + lines::plainPrefix(window.substr(known));
  plainEnd_ = begin + static_cast<int64_t>(length);
  return window.substr(0, length);
}

// Reads more behind a window that is plain to its end. A very long line would be searched again and again.
bool ztStringReader::growPlainWindow() {
  const size_t size = file_->GetWindow().size();
  return size < 2 * ztFastReadFile::PieceSize && plainWindow().size() == size && file_->Fill() &&
         !file_->Is16Bit();
}

int64_t ztStringReader::SkipPairs(ztStringReader& a, ztStringReader& b, const PairTest& test,
                                  const std::function<void(int64_t)>& watch) {
  for (const ztStringReader* each : {&a, &b}) {
    if (!each->file_ || each->file_->Is16Bit() || each->inLongLine_) return 0;
  }
  int64_t count = 0;
  for (bool more = true; more;) {
    const std::string_view plainA = a.plainWindow(), plainB = b.plainWindow();
    size_t atA = 0, atB = 0, endA, endB;
    bool passes = true;
    for (;; atA = endA + 1, atB = endB + 1, ++count) {
      endA = plainA.find('\n', atA);
      endB = plainB.find('\n', atB);
      if (endA == lines::none || endB == lines::none) break;
      passes = test(plainA.substr(atA, endA - atA), plainB.substr(atB, endB - atB));
      if (!passes) break;
    }
    a.file_->Consume(atA);
    b.file_->Consume(atB);
    if (watch) watch(a.file_->GetPosition());
    more = passes && (endA != lines::none || a.growPlainWindow()) &&
           (endB != lines::none || b.growPlainWindow());
  }
  if (count == 0) return 0;
  a.position_ = a.file_->GetPosition();
  b.position_ = b.file_->GetPosition();
  return count;
}

std::string_view ztStringReader::PeekPlainLines() {
  if (!file_ || inLongLine_ || file_->Is16Bit()) return {};
  // Who wants a few lines does not pay for a look at the whole window.
  constexpr size_t usualMost = 1 << 12;
  const std::string_view front = plainWindow(usualMost);
  const size_t lastInFront = front.rfind('\n');
  if (lastInFront != lines::none) return front.substr(0, lastInFront + 1);
  do {
    const std::string_view plain = plainWindow();
    const size_t last = plain.rfind('\n');
    if (last != lines::none) return plain.substr(0, last + 1);
  } while (growPlainWindow());
  return {};
}

void ztStringReader::PassPlainLines(size_t length) {
  if (length == 0) return;
  file_->Consume(length);
  position_ = file_->GetPosition();
  hadLineEnd_ = true;
  wasTooLong_ = false;
}

void ztStringReader::SkipLinesWithout(std::string_view text) {
  if (!file_ || file_->Is16Bit()) return;
  if (inLongLine_) passLongLine();
  bool more = true;
  while (more) {
    const std::string_view window = file_->GetWindow();
    const size_t found = window.find(text);
    const size_t whole = lines::wholeLines(window.substr(0, found), file_->GetEncoding());
    if (whole > 0) {
      file_->Consume(whole);
      position_ = file_->GetPosition();
    }
    more = found == lines::none && window.size() - whole <= lines::maxBytes && file_->Fill() &&
           !file_->Is16Bit();
  }
}
