#include "ztservice/call/MultipartReader.h"

#include <algorithm>

#include "tovinCore/platform/Files.h"
#include "tovinCore/platform/Paths.h"
#include "ztservice/Error.h"
#include "ztservice/call/Binary.h"
#include "ztservice/load/OpenFile.h"

namespace ztservice::call {

namespace {

namespace platform = tovin::platform;

constexpr size_t mostParts = 1000;
constexpr size_t largestHead = size_t{16} << 10;
// Of blanks behind a boundary.
constexpr size_t longestPadding = 100;
constexpr std::string_view blanks = " \t\r\n";

[[noreturn]] void fail(std::string_view text) { throw Error({"answer"}, text); }

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

bool equalFolded(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return lower(x) == lower(y); });
}

std::string_view trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
  return text.substr(0, text.find_last_not_of(blanks) + 1);
}

// A token, or what is in quotation marks, off the front of a parameter's value.
std::string takeValue(std::string_view& text) {
  std::string out;
  if (!text.starts_with('"')) {
    const size_t end = std::min(text.find(';'), text.size());
    out = trimmed(text.substr(0, end));
    text.remove_prefix(end);
    return out;
  }
  size_t at = 1;
  for (; at < text.size() && text[at] != '"'; ++at) {
    if (text[at] == '\\' && at + 1 < text.size()) ++at;
    out += text[at];
  }
  text.remove_prefix(std::min(at + 1, text.size()));
  return out;
}

// Where there is no memory for its name, it stays.
void removeFile(const std::string& file) noexcept {
  try {
    std::error_code ignored;
    std::filesystem::remove(platform::pathOf(file), ignored);
  } catch (...) {
    return;
  }
}

MimePart partOf(std::string_view head) {
  MimePart part;
  part.id = headerIn(head, "Content-ID");
  if (part.id.size() >= 2 && part.id.front() == '<' && part.id.back() == '>')
    part.id = part.id.substr(1, part.id.size() - 2);
  part.mediaType = headerIn(head, "Content-Type");
  part.fileName = parameterIn(headerIn(head, "Content-Disposition"), "filename");
  if (part.fileName.empty()) part.fileName = parameterIn(part.mediaType, "name");
  return part;
}

}  // namespace

bool isMultipart(std::string_view contentType) {
  constexpr std::string_view start = "multipart/";
  return equalFolded(contentType.substr(0, start.size()), start);
}

std::string headerIn(std::string_view head, std::string_view name) {
  std::string value;
  bool isFound = false;
  while (!head.empty()) {
    const size_t end = std::min(head.find('\n'), head.size());
    const std::string_view line = head.substr(0, end);
    head.remove_prefix(std::min(end + 1, head.size()));
    if (line.starts_with(' ') || line.starts_with('\t')) {
      if (isFound) value.append(" ").append(trimmed(line));
      continue;
    }
    if (isFound) break;
    const size_t colon = std::min(line.find(':'), line.size());
    isFound = colon < line.size() && equalFolded(trimmed(line.substr(0, colon)), name);
    if (isFound) value = trimmed(line.substr(colon + 1));
  }
  return value;
}

std::string parameterIn(std::string_view value, std::string_view name) {
  value.remove_prefix(std::min(value.find(';'), value.size()));
  while (!value.empty()) {
    value.remove_prefix(1);
    const size_t mark = std::min(value.find_first_of("=;"), value.size());
    const std::string_view key = trimmed(value.substr(0, mark));
    value.remove_prefix(mark);
    if (!value.starts_with('=')) continue;
    value.remove_prefix(1);
    value.remove_prefix(std::min(value.find_first_not_of(blanks), value.size()));
    std::string text = takeValue(value);
    if (equalFolded(key, name)) return text;
    value.remove_prefix(std::min(value.find(';'), value.size()));
  }
  return {};
}

MultipartReader::MultipartReader(std::string_view contentType, Sink& sink)
    : sink_(sink), delimiter_("\n--" + parameterIn(contentType, "boundary")) {
  constexpr size_t longest = 200;
  if (delimiter_.size() == 3) fail("its parts have no boundary");
  if (delimiter_.size() > longest) fail("the boundary of its parts is too long");
}

void MultipartReader::feed(std::string_view bytes) {
  if (state_ == State::behind) return;
  buffer_ += bytes;
  while (step()) {
  }
}

void MultipartReader::finish() const {
  if (state_ != State::behind) fail("its parts are cut off");
}

// False where more has to come first.
bool MultipartReader::step() {
  switch (state_) {
    case State::before:
    case State::content:
      return takeContent();
    case State::head:
      return takeHead();
    case State::behind:
      break;
  }
  return false;
}

bool MultipartReader::takeHead() {
  // The line end of the delimiter is there still: a part may have no head at all.
  size_t end = buffer_.find("\n\n"), behind = end + 2;
  const size_t other = buffer_.find("\n\r\n");
  if (other < end) {
    end = other;
    behind = other + 3;
  }
  if (std::min(end, buffer_.size()) > largestHead) fail("the head of a part is larger than 16 KiB");
  if (end == std::string::npos) return false;
  if (++parts_ > mostParts) fail("more than " + std::to_string(mostParts) + " parts");
  const std::string head = buffer_.substr(0, end);
  buffer_.erase(0, behind);
  // An empty part's delimiter follows at once.
  buffer_.insert(0, 1, '\n');
  isFirst_ = true;
  const std::string coding = headerIn(head, "Content-Transfer-Encoding");
  coding_ = equalFolded(coding, "base64")             ? Coding::base64
            : equalFolded(coding, "quoted-printable") ? Coding::quotedPrintable
                                                      : Coding::none;
  base64_ = {};
  escape_.clear();
  state_ = State::content;
  sink_.begin(partOf(head));
  return true;
}

// Up to the delimiter, or what cannot be one any more.
bool MultipartReader::takeContent() {
  for (size_t from = 0;;) {
    const size_t at = buffer_.find(delimiter_, from);
    if (at == std::string::npos) {
      // What a delimiter may begin with, and the CR before it.
      const size_t kept = std::min(buffer_.size(), delimiter_.size() + 1);
      give(std::string_view(buffer_).substr(0, buffer_.size() - kept));
      buffer_.erase(0, buffer_.size() - kept);
      return false;
    }
    const std::string_view rest = std::string_view(buffer_).substr(at + delimiter_.size());
    const bool isLast = rest.starts_with("--");
    const size_t text = rest.find_first_not_of(" \t\r");
    const bool isOpen = !isLast && (text == rest.npos || rest == "-") && rest.size() < longestPadding;
    if (!isLast && !isOpen && (text == rest.npos || rest[text] != '\n')) {
      from = at + 1;  // it goes on otherwise: no delimiter
      continue;
    }
    const size_t end = at > 0 && buffer_[at - 1] == '\r' ? at - 1 : at;
    if (isOpen) {
      give(std::string_view(buffer_).substr(0, end));
      buffer_.erase(0, end);
      return false;
    }
    give(std::string_view(buffer_).substr(0, end));
    if (state_ == State::content) endPart();
    buffer_.erase(0, isLast ? buffer_.size() : at + delimiter_.size() + text);
    state_ = isLast ? State::behind : State::head;
    return !isLast;
  }
}

void MultipartReader::endPart() {
  // An escape that was cut off; "=" alone ends a line.
  if (escape_.size() > 1 && escape_ != "=\r") sink_.content(escape_);
  escape_.clear();
  sink_.end();
}

void MultipartReader::give(std::string_view bytes) {
  if (bytes.empty() || state_ != State::content) return;
  // The line end in front of the first byte is our own.
  if (isFirst_) bytes.remove_prefix(1);
  isFirst_ = false;
  switch (coding_) {
    case Coding::none:
      sink_.content(bytes);
      return;
    case Coding::base64: {
      std::string out;
      base64_.decode(bytes, out);
      sink_.content(out);
      return;
    }
    case Coding::quotedPrintable:
      decodeQuotedPrintable(bytes);
      return;
  }
}

// "=3D" is a byte, "=" at the end of a line no byte at all; what is neither stays as it is.
void MultipartReader::decodeQuotedPrintable(std::string_view bytes) {
  std::string out;
  for (const char c : bytes) {
    if (escape_.empty() && c != '=') {
      out += c;
      continue;
    }
    escape_ += c;
    if (escape_ == "=" || escape_ == "=\r") continue;
    if (escape_ != "=\n" && escape_ != "=\r\n") {
      const int high = hexDigit(escape_[1]);
      if (escape_.size() == 2 && high >= 0) continue;
      const int low = escape_.size() == 3 ? hexDigit(escape_[2]) : -1;
      if (high >= 0 && low >= 0)
        out += static_cast<char>(high * 16 + low);
      else
        out += escape_;
    }
    escape_.clear();
  }
  sink_.content(out);
}

RelatedReader::RelatedReader(std::string_view contentType, uint64_t room, uint64_t fileRoom,
                             std::function<std::string(const MimePart&)> fileFor)
    : reader_(contentType, *this),
      start_(parameterIn(contentType, "start")),
      room_(room),
      fileRoom_(fileRoom),
      fileFor_(std::move(fileFor)) {
  if (start_.size() >= 2 && start_.front() == '<' && start_.back() == '>')
    start_ = start_.substr(1, start_.size() - 2);
}

RelatedReader::~RelatedReader() {
  if (open_ != -1) platform::closeFile(open_);
  if (isTaken_) return;
  for (const MimePart& part : out_.parts) {
    if (!part.file.empty()) removeFile(part.file);
  }
}

void RelatedReader::feed(std::string_view bytes) { reader_.feed(bytes); }

void RelatedReader::begin(MimePart head) {
  isInRoot_ = !hasRoot_ && (start_.empty() || head.id == start_);
  if (isInRoot_) {
    hasRoot_ = true;
    out_.mediaType = head.mediaType;
    return;
  }
  const std::string file = fileFor_ ? fileFor_(head) : std::string();
  out_.parts.push_back(std::move(head));
  if (file.empty()) return;
  open_ = platform::openFile(platform::fileName(file).c_str(), platform::OpenMode::create);
  if (open_ == -1) parse::failFor(file, "cannot be written");
  out_.parts.back().file = file;
  written_ = 0;
}

void RelatedReader::content(std::string_view bytes) {
  if (open_ == -1) {
    if (bytes.size() > room_) fail("more bytes than are allowed");
    room_ -= bytes.size();
    (isInRoot_ ? out_.root : out_.parts.back().bytes) += bytes;
    return;
  }
  const std::string& file = out_.parts.back().file;
  written_ += bytes.size();
  if (written_ > fileRoom_) throw Error({file}, "more bytes than are allowed");
  while (!bytes.empty()) {
    const int64_t count = platform::writeFile(open_, bytes.data(), bytes.size());
    if (count <= 0) parse::failFor(file, "cannot be written");
    bytes.remove_prefix(static_cast<size_t>(count));
  }
}

void RelatedReader::end() {
  isInRoot_ = false;
  if (open_ == -1) return;
  platform::closeFile(open_);
  open_ = -1;
}

RelatedParts RelatedReader::take() {
  reader_.finish();
  if (!hasRoot_)
    fail(start_.empty() ? "it has no parts" : "it has no part " + start_ + ", which is its root");
  isTaken_ = true;
  return std::move(out_);
}

RelatedParts readMultipart(std::string_view contentType, std::string_view body) {
  RelatedReader reader(contentType, body.size(), 0, {});
  reader.feed(body);
  return reader.take();
}

}  // namespace ztservice::call
