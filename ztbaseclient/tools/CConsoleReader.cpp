#include "ztbaseclient/tools/CConsoleReader.h"

#include <algorithm>
#include <utility>

#include "tovin/Constants.h"
#include "tovinCore/Guard.h"
#include "tovinCore/Utf8.h"
#include "ztcore/ztMemoryStringFile.h"
#include "ztcore/ztStringReader.h"

using tovin::guarded;

namespace {

// Of the texts of an earlier entry so many pairs are kept, and none that is longer.
constexpr size_t maxSpare = 64, maxSpareLength = 4096;

bool isBlank(wchar_t c) { return c == L' ' || c == L'\r' || c == L'\n' || c == L'\t' || c == L'\xA0'; }

std::wstring_view trimmed(std::wstring_view text) {
  size_t first = 0, end = text.size();
  while (first < end && isBlank(text[first])) ++first;
  while (first < end && isBlank(text[end - 1])) --end;
  return {text.data() + first, end - first};
}

// The character that an escape stands for, 0 for what is none.
wchar_t unescaped(wchar_t letter) {
  switch (letter) {
    case L'n':
      return L'\n';
    case L't':
      return L'\t';
    case L'p':
      return L'%';
    default:
      return L'\0';
  }
}

void decode(std::wstring_view text, tovin::WideString& out) {
  out.setLength(text.size());
  wchar_t* to = out.data();
  for (size_t at = 0; at < text.size();) {
    const size_t sign = std::min(text.find(L'%', at), text.size());
    to = std::copy(text.data() + at, text.data() + sign, to);
    if (sign == text.size()) break;
    const wchar_t escape = sign + 1 < text.size() ? unescaped(text[sign + 1]) : L'\0';
    *to++ = escape ? escape : L'%';
    at = sign + (escape ? 2 : 1);
  }
  out.setLength(static_cast<size_t>(to - out.data()));
}

const std::wstring_view beginText = tovin::DRV_ConsoleEntryBegin, endText = tovin::DRV_ConsoleEntryEnd;

bool holds(std::wstring_view text, std::wstring_view marker) {
  return text.size() >= marker.size() && text.find(marker) != std::wstring_view::npos;
}

// As the bytes of a log.
const std::string& beginMarker() {
  static const std::string bytes = tovin::wideToUtf8(beginText);
  return bytes;
}

}  // namespace

CConsoleReader::CConsoleReader(const wchar_t* path, int64_t position) {
  guarded({ClassName, "CConsoleReader"}, [&] {
    if (!ztFile::CanOpen(path, ztFile::ForReading)) return;
    source_ = std::make_unique<ztStringReader>(path, ztStringReader::Ending::Growing);
    source_->Seek(position);
    resume_ = position;
  });
}

CConsoleReader::CConsoleReader(ztMemoryStringFile& file, int64_t position) {
  guarded({ClassName, "CConsoleReader"}, [&] {
    source_ = std::make_unique<ztStringReader>(file);
    source_->Seek(position);
    resume_ = position;
  });
}

CConsoleReader::CConsoleReader(CConsoleReader& other) noexcept
    : source_(std::move(other.source_)),
      resume_(std::exchange(other.resume_, 0)),
      unfinishedLine_(other.unfinishedLine_),
      entryComplete_(other.entryComplete_) {}

CConsoleReader& CConsoleReader::operator=(CConsoleReader& other) noexcept {
  if (this == &other) return *this;
  source_ = std::move(other.source_);
  resume_ = std::exchange(other.resume_, 0);
  unfinishedLine_ = other.unfinishedLine_;
  entryComplete_ = other.entryComplete_;
  return *this;
}

CConsoleReader::~CConsoleReader() = default;

int64_t CConsoleReader::GetPosition() const {
  return guarded({ClassName, "GetPosition"}, [&] { return source_ ? source_->GetPosition() : 0; });
}

void CConsoleReader::Resume() {
  guarded({ClassName, "Resume"}, [&] {
    if (source_) source_->Seek(resume_);
    unfinishedLine_ = false;
  });
}

bool CConsoleReader::GetNextEntry(CConsoleEntry& entry) {
  return guarded({ClassName, "GetNextEntry"}, [&] {
    if (!source_) return false;
    empty(entry);
    try {
      if (!findBegin()) return false;
      readPairs(entry);
    } catch (...) {
      if (source_->WasTooLong()) resume_ = source_->GetPosition();
      throw;
    }
    return true;
  });
}

void CConsoleReader::empty(CConsoleEntry& entry) {
  for (CConsoleEntry::NameValue& pair : entry.pairs_) {
    if (spare_.size() == maxSpare) break;
    if (std::max(pair.name.getLength(), pair.value.getLength()) <= maxSpareLength)
      spare_.push_back(std::move(pair));
  }
  entry.Clear();
}

bool CConsoleReader::nextLine() {
  if (!source_->GetLine(line_)) return false;
  text_ = trimmed(line_.view());
  return true;
}

// A last line that has no end yet may become a marker: it is read again, from its beginning, when more is
// asked for.
bool CConsoleReader::findBegin() {
  if (unfinishedLine_) source_->Seek(resume_);
  unfinishedLine_ = false;
  int64_t start = source_->GetPosition();
  source_->SkipLinesWithout(beginMarker());
  if (source_->GetPosition() != start) resume_ = source_->GetPosition();
  for (;;) {
    start = source_->GetPosition();
    if (!nextLine()) return false;
    const bool found = holds(text_, beginText);
    unfinishedLine_ = !found && !source_->HadLineEnd();
    resume_ = found || unfinishedLine_ ? start : source_->GetPosition();
    if (found) return true;
  }
}

void CConsoleReader::readPairs(CConsoleEntry& entry) {
  entryComplete_ = false;
  while (nextLine()) {
    if (holds(text_, endText)) {
      entryComplete_ = true;
      resume_ = source_->GetPosition();
      return;
    }
    readPair(entry);
  }
}

void CConsoleReader::readPair(CConsoleEntry& entry) {
  const size_t tab = text_.find(L'\t');
  if (tab == std::wstring_view::npos || tab == 0) return;
  const auto first = static_cast<unsigned>(text_.data() - line_.c_str());
  const auto last = static_cast<unsigned>(first + text_.size() - 1);
  const auto middle = static_cast<unsigned>(first + tab);
  CConsoleEntry::NameValue& pair = entry.Add();
  if (!spare_.empty()) {
    std::swap(pair, spare_.back());
    spare_.pop_back();
  }
  Decode(line_, first, middle - 1, pair.name);
  Decode(line_, middle + 1, last, pair.value);
}

void CConsoleReader::Decode(const tovin::BaseString<wchar_t>& line, unsigned start, unsigned end,
                            tovin::BaseString<wchar_t>& out) {
  guarded({ClassName, "Decode"}, [&] {
    const bool any = start <= end && start < line.getLength();
    decode(any ? line.view().substr(start, size_t{end} - start + 1) : std::wstring_view(), out);
  });
}
