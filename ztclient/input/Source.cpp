#include "ztclient/input/Source.h"

#include <algorithm>
#include <cstring>

#include "tovinCore/Exception.h"
#include "tovinCore/platform/Files.h"
#include "tovinCore/platform/Paths.h"
#include "ztclient/terminal/Messages.h"

namespace platform = tovin::platform;

namespace {

constexpr size_t roomSize = 1 << 16;

}  // namespace

Source::Source(const std::string& given)
    : name_(platform::fileName(given)),
      handle_(platform::standardInput()),
      owned_(given != "-"),
      room_(roomSize) {
  if (owned_) handle_ = platform::openFile(name_.c_str(), platform::OpenMode::read);
  if (handle_ == -1) fail(L"Unable to open file %ls");
  at_ = end_ = room_.data();
  messages::note("reads " + (owned_ ? given : std::string("standard input")));
}

Source::~Source() {
  if (owned_ && handle_ != -1) platform::closeFile(handle_);
}

void Source::fail(const wchar_t* pattern) const {
  const std::wstring reason = platform::lastFailure();
  tovin::Exception failure(pattern, name_);
  throw failure.setFile(name_).setReason(reason);
}

size_t Source::receive(unsigned char* bytes, size_t count) const {
  const int64_t got = platform::readFile(handle_, bytes, count);
  if (got < 0) fail(L"Unable to read file %ls");
  return static_cast<size_t>(got);
}

size_t Source::read(void* bytes, size_t count) {
  auto* out = static_cast<unsigned char*>(bytes);
  size_t done = 0;
  while (done < count) {
    const std::string_view next = head(1);
    if (next.empty()) break;
    const size_t piece = std::min(next.size(), count - done);
    std::memcpy(out + done, next.data(), piece);
    at_ += piece;
    done += piece;
  }
  return done;
}

bool Source::readLine(std::string& line, size_t longest) {
  line.clear();
  for (;;) {
    const std::string_view next = head(1);
    if (next.empty()) return !line.empty();
    const size_t end = std::min(next.find('\n'), next.size());
    if (end > longest - line.size())
      throw tovin::Exception(L"A line of the input is longer than %d bytes", static_cast<int>(longest));
    line += next.substr(0, end);
    const bool isWhole = end < next.size();
    at_ += end + (isWhole ? 1 : 0);
    if (isWhole) return true;
  }
}

std::string_view Source::head(size_t count) {
  auto left = static_cast<size_t>(end_ - at_);
  if (left < count) {
    std::memmove(room_.data(), at_, left);
    for (size_t got = 1; left < count && got > 0; left += got)
      got = receive(room_.data() + left, room_.size() - left);
    at_ = room_.data();
    end_ = at_ + left;
  }
  return {reinterpret_cast<const char*>(at_), left};
}
