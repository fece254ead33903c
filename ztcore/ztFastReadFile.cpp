#include "ztcore/ztFastReadFile.h"

#include <algorithm>
#include <cstring>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"

namespace {

using Encoding = ztFile::Encoding;

struct Mark {
  std::string_view bytes;
  Encoding encoding;
};

constexpr Mark marks[] = {
    {"\xEF\xBB\xBF", Encoding::Utf8}, {"\xFF\xFE", Encoding::Utf16}, {"\xFE\xFF", Encoding::Utf16BigEndian}};

// As much of the beginning as the search for zero bytes looks at.
constexpr size_t headSize = 4096;

bool isBlank(unsigned char byte) { return byte == ' ' || (byte >= '\t' && byte <= '\r'); }

// Without a mark, fewer characters say nothing, and more of them have a blank among them.
constexpr size_t fewestCharacters = 4, mostWithoutBlank = 64;

// UTF-16 without a mark: most units are plain characters below U+0100, with their high byte zero, and hardly
// any has a zero low byte or is a control character, but for surrogates. So neither 8-bit text with some zero
// bytes nor a table of small binary numbers passes for it.
bool looks16Bit(std::string_view head, size_t highByte) {
  size_t plain = 0, blank = 0, strange = 0;
  for (size_t at = 0; at + 1 < head.size(); at += 2) {
    const auto low = static_cast<unsigned char>(head[at + 1 - highByte]);
    const auto high = static_cast<unsigned char>(head[at + highByte]);
    if ((high & 0xF8) == 0xD8) continue;
    const bool isText = low >= 0x20 || isBlank(low);
    plain += high == 0 && isText;
    blank += high == 0 && isBlank(low);
    strange += low == 0 || (high == 0 && !isText);
  }
  if (plain < fewestCharacters || (blank == 0 && plain > mostWithoutBlank)) return false;
  return plain * 4 > head.size() / 2 && strange * 4 < plain;
}

Encoding find16Bit(std::string_view head) {
  if (looks16Bit(head, 1)) return Encoding::Utf16;
  if (looks16Bit(head, 0)) return Encoding::Utf16BigEndian;
  return Encoding::Unknown;
}

// How many bytes at the end belong to a sequence that is cut off there.
size_t cutLength(std::string_view bytes) {
  size_t length = 1;
  while (length < bytes.size() && (bytes[bytes.size() - length] & 0xC0) == 0x80) ++length;
  return length;
}

}  // namespace

ztFastReadFile::ztFastReadFile(const wchar_t* name, Ending ending) : name_(name), ending_(ending) {
  if (!file_.Open(name, ztFile::ForReading)) throw ztFile::OpenFailure(L"Unable to open file %ls", name);
  examineHead();
}

ztFastReadFile::~ztFastReadFile() = default;

// A file that is still empty says nothing yet, and is looked at again when it is read.
void ztFastReadFile::examineHead() {
  unsigned char bytes[headSize];
  file_.Seek(0);
  const unsigned count = file_.Read(bytes, headSize);
  const std::string_view head(reinterpret_cast<const char*>(bytes), count);
  examined_ = count > 0;
  const bool halfUnit = ending_ == Ending::Final && count < headSize && count % 2 != 0;
  encoding_ = halfUnit ? Encoding::Unknown : find16Bit(head);
  for (const Mark& mark : marks) {
    if (!head.starts_with(mark.bytes)) continue;
    encoding_ = mark.encoding;
    markLength_ = static_cast<int64_t>(mark.bytes.size());
  }
  Seek(position_);
}

void ztFastReadFile::DetermineEncoding() {
  if (encoding_ != Encoding::Unknown) return;
  encoding_ = isWhollyUtf8() ? Encoding::Utf8 : Encoding::Bytes;
  file_.Seek(position_ + static_cast<int64_t>(end_ - begin_));
}

bool ztFastReadFile::isWhollyUtf8() {
  const auto piece = std::make_unique_for_overwrite<unsigned char[]>(PieceSize);
  size_t kept = 0;
  file_.Seek(0);
  while (const unsigned count = file_.Read(piece.get() + kept, static_cast<unsigned>(PieceSize - kept))) {
    const std::string_view bytes(reinterpret_cast<const char*>(piece.get()), kept + count);
    bool cutShort = false;
    kept = 0;
    if (tovin::isValidUtf8(bytes, cutShort)) continue;
    if (!cutShort) return false;
    kept = cutLength(bytes);
    std::memmove(piece.get(), bytes.data() + bytes.size() - kept, kept);
  }
  return kept == 0 || ending_ == Ending::Growing;
}

void ztFastReadFile::makeRoom() {
  const size_t held = end_ - begin_;
  const size_t wanted = held < capacity_ ? capacity_ : std::max(PieceSize, 2 * capacity_);
  if (wanted > capacity_) {
    auto larger = std::make_unique_for_overwrite<char[]>(wanted);
    if (held > 0) std::memcpy(larger.get(), buffer_.get() + begin_, held);
    buffer_ = std::move(larger);
    capacity_ = wanted;
  } else if (begin_ > 0) {
    std::memmove(buffer_.get(), buffer_.get() + begin_, held);
  }
  begin_ = 0;
  end_ = held;
}

bool ztFastReadFile::Fill() {
  if (!examined_) examineHead();
  makeRoom();
  const unsigned count = file_.Read(reinterpret_cast<unsigned char*>(buffer_.get()) + end_,
                                    static_cast<unsigned>(capacity_ - end_));
  end_ += count;
  return count > 0;
}

void ztFastReadFile::Consume(size_t count) noexcept {
  begin_ += count;
  position_ += static_cast<int64_t>(count);
}

void ztFastReadFile::Seek(int64_t position) {
  if (position < 0) throw tovin::Exception(L"Position %d lies before the beginning", position);
  if (Is16Bit()) position -= position % 2;
  position_ = std::max(position, markLength_);
  begin_ = end_ = 0;
  file_.Seek(position_);
}
