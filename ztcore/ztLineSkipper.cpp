#include "ztcore/ztLineSkipper.h"

#include <algorithm>
#include <cstring>

#include "tovinCore/Utf8.h"
#include "ztcore/ztLineBytes.h"

namespace {

size_t commonPrefix(const char* a, const char* b, size_t count) {
  if (count == 0 || std::memcmp(a, b, count) == 0) return count;
  size_t at = 0;
  for (; count - at >= sizeof(uint64_t); at += sizeof(uint64_t)) {
    uint64_t wordA, wordB;
    std::memcpy(&wordA, a + at, sizeof wordA);
    std::memcpy(&wordB, b + at, sizeof wordB);
    if (wordA != wordB) break;
  }
  while (a[at] == b[at]) ++at;
  return at;
}

}  // namespace

int64_t ztLineSkipper::skip() {
  if (a_.GetEncoding() != b_.GetEncoding()) {
    if (a_.Is16Bit() || b_.Is16Bit()) return 0;
    asciiOnly_ = true;
  }
  while (passStretch()) continue;
  if (insideLine_) lines::refuseLong(a_.GetName(), lineStart_);
  if (guess_.made) settleEncoding();
  return lines_;
}

// Passes over what is equal in the two windows; false at the end and at a difference.
bool ztLineSkipper::passStretch() {
  const size_t count = std::min(a_.GetWindow().size(), b_.GetWindow().size());
  const size_t equal = equalLength(count);
  noteGuess(equal);
  const size_t whole = lines::wholeLines(a_.GetWindow().substr(0, equal), a_.GetEncoding());
  passWholeLines(whole);
  if (equal < count) return passUnlikeEnds(equal - whole);
  if (equal - whole > lines::maxBytes) passInsideLine(equal - whole);
  return fillExhausted();
}

size_t ztLineSkipper::equalLength(size_t count) const {
  const std::string_view a = a_.GetWindow();
  const size_t equal = commonPrefix(a.data(), b_.GetWindow().data(), count);
  return asciiOnly_ ? tovin::asciiPrefix(a.substr(0, equal)) : equal;
}

void ztLineSkipper::noteGuess(size_t count) {
  const bool unsure = !guess_.made && !asciiOnly_ && a_.GetEncoding() == ztFile::Encoding::Unknown;
  if (!unsure || tovin::asciiPrefix(a_.GetWindow().substr(0, count)) == count) return;
  guess_ = {true, insideLine_, a_.GetPosition(), b_.GetPosition(), lines_};
}

void ztLineSkipper::passWholeLines(size_t count) {
  if (count == 0) return;
  lines_ += static_cast<int64_t>(lines::countLineFeeds(a_.GetWindow().substr(0, count), a_.GetEncoding()));
  a_.Consume(count);
  b_.Consume(count);
  insideLine_ = false;
}

void ztLineSkipper::passInsideLine(size_t count) {
  if (!insideLine_) lineStart_ = a_.GetPosition();
  insideLine_ = true;
  if (a_.Is16Bit()) count -= count % 2;
  a_.Consume(count);
  b_.Consume(count);
}

void ztLineSkipper::passLine(size_t countA, size_t countB) {
  a_.Consume(countA);
  b_.Consume(countB);
  ++lines_;
  insideLine_ = false;
}

// Behind equal bytes of a line: whether the lines differ in nothing but their ends.
bool ztLineSkipper::passUnlikeEnds(size_t equal) {
  if (a_.Is16Bit()) return false;
  const std::string_view a = a_.GetWindow().substr(equal), b = b_.GetWindow().substr(equal);
  if (a.starts_with("\r\n") && b.starts_with('\n'))
    passLine(equal + 2, equal + 1);
  else if (a.starts_with('\n') && b.starts_with("\r\n"))
    passLine(equal + 1, equal + 2);
  else
    return false;
  return true;
}

// The shorter window is equal to the beginning of the other: reads on behind it.
bool ztLineSkipper::fillExhausted() {
  if (watch_) watch_(a_.GetPosition());
  const size_t sizeA = a_.GetWindow().size(), sizeB = b_.GetWindow().size();
  const bool moreA = sizeA <= sizeB && a_.Fill();
  const bool moreB = sizeB <= sizeA && b_.Fill();
  if (!moreA && !moreB && sizeA == sizeB) passLastLine();
  return moreA || moreB;
}

// Both files end here and were the same bytes, so nothing hangs on their encoding any more.
void ztLineSkipper::passLastLine() {
  const size_t size = a_.GetWindow().size();
  if (size > 0 || insideLine_) passLine(size, size);
  guess_.made = false;
}

void ztLineSkipper::settleEncoding() {
  a_.DetermineEncoding();
  b_.DetermineEncoding();
  if (a_.GetEncoding() == b_.GetEncoding()) return;
  if (guess_.insideLine) lines::refuseLong(a_.GetName(), lineStart_);
  a_.Seek(guess_.a);
  b_.Seek(guess_.b);
  lines_ = guess_.lines;
}
