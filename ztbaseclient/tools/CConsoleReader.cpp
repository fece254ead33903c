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
// Of a plain line, which has none of the others.
bool isBlank(char c) { return c == ' ' || c == '\t'; }

template <class View>
View trimmed(View text) {
  size_t first = 0, end = text.size();
  while (first < end && isBlank(text[first])) ++first;
  while (first < end && isBlank(text[end - 1])) --end;
  return {text.data() + first, end - first};
}

// The character that an escape stands for, 0 for what is none.
template <class Char>
Char unescaped(Char letter) {
  switch (letter) {
    case 'n':
      return '\n';
    case 't':
      return '\t';
    case 'p':
      return '%';
    default:
      return 0;
  }
}

// Decoding makes a text no longer.
template <class Char, class Out>
void decode(std::basic_string_view<Char> text, tovin::BaseString<Out>& out) {
  out.setLength(text.size());
  Out* to = out.data();
  for (size_t at = 0; at < text.size();) {
    const size_t sign = std::min(text.find(Char{'%'}, at), text.size());
    to = std::copy(text.data() + at, text.data() + sign, to);
    if (sign == text.size()) break;
    const Char escape = sign + 1 < text.size() ? unescaped(text[sign + 1]) : Char{0};
    *to++ = static_cast<Out>(escape ? escape : Char{'%'});
    at = sign + (escape ? 2 : 1);
  }
  out.setLength(static_cast<size_t>(to - out.data()));
}

const std::wstring_view beginText = tovin::DRV_ConsoleEntryBegin, endText = tovin::DRV_ConsoleEntryEnd;

bool holds(std::wstring_view text, std::wstring_view marker) {
  return text.size() >= marker.size() && text.find(marker) != std::wstring_view::npos;
}

// The markers as bytes of a log.
const std::string& beginMarker() {
  static const std::string bytes = tovin::wideToUtf8(beginText);
  return bytes;
}
const std::string& endMarker() {
  static const std::string bytes = tovin::wideToUtf8(endText);
  return bytes;
}

// Gives a line's name and value, as they stand there, to `take`.
template <class View, class Take>
void splitPair(View text, const Take& take) {
  const size_t tab = text.find('\t');
  if (tab != View::npos && tab != 0) take(text.substr(0, tab), text.substr(tab + 1));
}

// What a name or value decodes to in UTF-8; in `room` only where that differs from the line.
std::string_view utf8Of(std::string_view plain, tovin::BaseString<char>& room) {
  if (plain.find('%') == std::string_view::npos) return plain;
  decode(plain, room);
  return room.view();
}
std::string_view utf8Of(std::wstring_view text, tovin::BaseString<char>& room) {
  tovin::WideString decoded;
  decode(text, decoded);
  room = tovin::wideToUtf8(decoded.view());
  return room.view();
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
    return readEntry([&](auto name, auto value) {
      CConsoleEntry::NameValue& pair = addPair(entry);
      decode(name, pair.name);
      decode(value, pair.value);
    });
  });
}

bool CConsoleReader::VisitNextEntry(const PairVisitor& visit) {
  return guarded({ClassName, "VisitNextEntry"}, [&] {
    if (!source_) return false;
    return readEntry(
        [&](auto name, auto value) { visit(utf8Of(name, nameRoom_), utf8Of(value, valueRoom_)); });
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
  if (findPlainBegin()) return true;
  for (;;) {
    start = source_->GetPosition();
    if (!nextLine()) return false;
    const bool found = holds(text_, beginText);
    unfinishedLine_ = !found && !source_->HadLineEnd();
    resume_ = found || unfinishedLine_ ? start : source_->GetPosition();
    if (found) return true;
  }
}

// Looks at the lines at hand only: of those without a marker there may be very many.
bool CConsoleReader::findPlainBegin() {
  const std::string_view plain = source_->PeekPlainLines();
  const size_t marker = plain.find(beginMarker());
  if (marker == std::string_view::npos) return false;
  const size_t start = plain.rfind('\n', marker) + 1;  // 0 in the first line
  resume_ = source_->GetPosition() + static_cast<int64_t>(start);
  source_->PassPlainLines(plain.find('\n', marker) + 1);
  return true;
}

// A line that is too long ends its entry: reading begins behind it.
template <class Pairs>
bool CConsoleReader::readEntry(const Pairs& pairs) {
  try {
    if (!findBegin()) return false;
    entryComplete_ = false;
    while (!entryComplete_ && (readPlainPairs(pairs) || readLine(pairs))) continue;
    return true;
  } catch (...) {
    if (source_->WasTooLong()) resume_ = source_->GetPosition();
    throw;
  }
}

// The lines at hand, up to the end of the entry; false if there are none.
template <class Pairs>
bool CConsoleReader::readPlainPairs(const Pairs& pairs) {
  const std::string_view plain = source_->PeekPlainLines();
  if (plain.empty()) return false;
  const size_t marker = plain.find(endMarker());
  entryComplete_ = marker != std::string_view::npos;
  const size_t end = entryComplete_ ? plain.rfind('\n', marker) + 1 : plain.size();
  for (size_t at = 0, lineEnd; at < end; at = lineEnd + 1) {
    lineEnd = plain.find('\n', at);
    splitPair(trimmed(plain.substr(at, lineEnd - at)), pairs);
  }
  source_->PassPlainLines(entryComplete_ ? plain.find('\n', marker) + 1 : end);
  if (entryComplete_) resume_ = source_->GetPosition();
  return true;
}

// One line of any kind; false at the end of the log.
template <class Pairs>
bool CConsoleReader::readLine(const Pairs& pairs) {
  if (!nextLine()) return false;
  entryComplete_ = holds(text_, endText);
  if (entryComplete_)
    resume_ = source_->GetPosition();
  else
    splitPair(text_, pairs);
  return true;
}

CConsoleEntry::NameValue& CConsoleReader::addPair(CConsoleEntry& entry) {
  CConsoleEntry::NameValue& pair = entry.Add();
  if (!spare_.empty()) {
    std::swap(pair, spare_.back());
    spare_.pop_back();
  }
  return pair;
}

void CConsoleReader::Decode(const tovin::BaseString<wchar_t>& line, unsigned start, unsigned end,
                            tovin::BaseString<wchar_t>& out) {
  guarded({ClassName, "Decode"}, [&] {
    const bool any = start <= end && start < line.getLength();
    decode(any ? line.view().substr(start, size_t{end} - start + 1) : std::wstring_view(), out);
  });
}
