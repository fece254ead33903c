#include "tovin/ByteCoding.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "tovinCore/Exception.h"
#include "tovinCore/Units.h"

namespace tovin::coding {
namespace {

// Header bytes of the compact integer's longer forms.
constexpr unsigned char oneByte = 0x01, twoBytes = 0x02, fourBytes = 0x03;
constexpr size_t longestInt = 5;

// Stream versions: 1 has raw UTF-16 bodies, later ones UTF-8 bodies.
constexpr int rawUtf16Version = 1;

// Units decoded at a time; also the most room that a count alone can claim.
constexpr int32_t chunkUnits = 4096;

void requireKnownVersion(int version) {
  if (version < rawUtf16Version) throw Exception(L"Unknown serialization version %d\n", version);
}

// Collects encoded bytes and hands them on in large pieces.
class Buffered {
 public:
  explicit Buffered(iByteOutputStream& stream) : stream_(stream) {}
  void put(char16_t unit) {
    if (unit < 0x80) {
      bytes_[used_++] = static_cast<unsigned char>(unit);
    } else {
      used_ += encodeUtf8Unit(unit, bytes_ + used_);
    }
    if (used_ > sizeof bytes_ - 6) flush();
  }
  void putRaw(char16_t unit) {
    bytes_[used_++] = static_cast<unsigned char>(unit & 0xFF);
    bytes_[used_++] = static_cast<unsigned char>(unit >> 8);
    if (used_ > sizeof bytes_ - 6) flush();
  }
  void flush() {
    if (used_) stream_.put(bytes_, used_);
    used_ = 0;
  }

 private:
  iByteOutputStream& stream_;
  size_t used_ = 0;
  unsigned char bytes_[1024];
};

// Calls body(char16_t) for each unit.
template <class Body>
void forTextUnits(std::wstring_view text, Body&& body) {
  for (wchar_t c : text) forUnits(static_cast<uint32_t>(c), body);
}
template <class Body>
void forTextUnits(std::u16string_view text, Body&& body) {
  for (char16_t unit : text) body(unit);
}
template <class Body>
void forTextUnits(std::string_view text, Body&& body) {
  for (char c : text) body(static_cast<char16_t>(static_cast<unsigned char>(c)));
}

// The bytes of a compact integer; returns how many.
size_t encodeInt(int32_t value, unsigned char* bytes) noexcept {
  const auto bits = static_cast<uint32_t>(value);
  if (value >= -16 && value <= 15) {
    bytes[0] = static_cast<unsigned char>(bits << 2);
    return 1;
  }
  bytes[0] = value == static_cast<int8_t>(value)    ? oneByte
             : value == static_cast<int16_t>(value) ? twoBytes
                                                    : fourBytes;
  const size_t width = bytes[0] == fourBytes ? 4 : bytes[0];
  for (size_t i = 0; i < width; ++i) bytes[1 + i] = static_cast<unsigned char>(bits >> 8 * i);
  return 1 + width;
}

// Most texts are short names of ASCII: count and body in one piece. False, and nothing written, for others.
template <class Text>
bool writeShortAscii(iByteOutputStream& stream, Text text) {
  constexpr size_t longest = 64;
  if (text.size() > longest || stream.getSerializationVersion() <= rawUtf16Version) return false;
  unsigned char bytes[longestInt + longest];
  const size_t head = encodeInt(static_cast<int32_t>(text.size()) + 1, bytes);
  uint32_t all = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const auto element = static_cast<std::make_unsigned_t<typename Text::value_type>>(text[i]);
    all |= element;
    bytes[head + i] = static_cast<unsigned char>(element);
  }
  if (all >= 0x80) return false;
  stream.put(bytes, head + text.size());
  return true;
}

template <class Text>
void writeUnits(iByteOutputStream& stream, Text text) {
  if (writeShortAscii(stream, text)) return;
  size_t units = text.size();
  if constexpr (std::is_same_v<Text, std::wstring_view>) units = countUnits(text);
  if (units >= INT32_MAX) throw Exception(L"A text of %d units is too long for a record", units);
  writeInt(stream, static_cast<int32_t>(units) + 1);
  if (units == 0) return;
  requireKnownVersion(stream.getSerializationVersion());
  Buffered out(stream);
  const bool raw = stream.getSerializationVersion() == rawUtf16Version;
  forTextUnits(text, [&](char16_t unit) { raw ? out.putRaw(unit) : out.put(unit); });
  out.flush();
}

// Where a body stands, for its messages.
struct Progress {
  int32_t done;
  int32_t total;
};

[[noreturn]] void refuseCount(int32_t count) { throw Exception(L"A string cannot have the count %d", count); }

[[noreturn]] void throwEndOfString(Progress progress) {
  throw Exception(L"EOF reading byte %d in string of length %d", progress.done + 1, progress.total);
}

[[noreturn]] void throwEndOfSequence() { throw Exception(L"EOF reading wchar_t additional bytes"); }

void readRawUnits(iByteInputStream& stream, wchar_t* out, int32_t count, Progress progress) {
  unsigned char raw[1024];
  while (count > 0) {
    const int32_t units = std::min<int32_t>(count, sizeof raw / 2);
    const size_t got = stream.take(raw, static_cast<size_t>(units) * 2);
    for (size_t i = 0; i + 1 < got; i += 2) *out++ = static_cast<wchar_t>(raw[i] | raw[i + 1] << 8);
    progress.done += static_cast<int32_t>(got / 2);
    if (got < static_cast<size_t>(units) * 2) throwEndOfString(progress);
    count -= units;
  }
}

// Decodes units out of bytes that it reads ahead, never further than the units still to come need at the
// least.
class UnitReader {
 public:
  UnitReader(iByteInputStream& stream, Progress progress) : stream_(stream), progress_(progress) {}

  void read(wchar_t* out, int32_t count) {
    while (count > 0) {
      fill(count);
      count -= decode(out, count);
    }
  }

 private:
  // Decodes while whole sequences are there; returns how many units that gave.
  int32_t decode(wchar_t*& out, int32_t count) {
    const int32_t before = progress_.done;
    for (; count > 0 && at_ < have_; --count, ++progress_.done) {
      const unsigned char lead = bytes_[at_];
      if (lead < 0x80) {
        *out++ = static_cast<wchar_t>(lead);
        ++at_;
        continue;
      }
      const unsigned length = utf8UnitLength(lead);
      if (length == 0) throwEndOfSequence();
      if (have_ - at_ < length) break;
      uint32_t value = 0;
      decodeUtf8Unit(bytes_ + at_, value);
      *out++ = static_cast<wchar_t>(value & 0xFFFF);
      at_ += length;
    }
    return progress_.done - before;
  }

  // Fetches more bytes: the rest of a sequence that has begun and one byte for each unit behind it.
  void fill(int32_t count) {
    const size_t begun = have_ - at_;
    std::memmove(bytes_, bytes_ + at_, begun);
    at_ = 0;
    have_ = begun;
    size_t least = static_cast<size_t>(count);
    if (begun) least = least - 1 + utf8UnitLength(bytes_[0]) - begun;
    const size_t got = stream_.take(bytes_ + begun, std::min(least, sizeof bytes_ - begun));
    if (got == 0 && begun) throwEndOfSequence();
    if (got == 0) throwEndOfString(progress_);
    have_ += got;
  }

  iByteInputStream& stream_;
  Progress progress_;
  size_t at_ = 0;
  size_t have_ = 0;
  unsigned char bytes_[512];
};

void readUnits(iByteInputStream& stream, wchar_t* out, int32_t count, Progress progress) {
  if (stream.getSerializationVersion() == rawUtf16Version) return readRawUnits(stream, out, count, progress);
  UnitReader(stream, progress).read(out, count);
}

}  // namespace

void writeInt(iByteOutputStream& stream, int32_t value) {
  unsigned char bytes[longestInt];
  const size_t count = encodeInt(value, bytes);
  stream.put(bytes, count);
}

int32_t readInt(iByteInputStream& stream) {
  unsigned char header;
  readBytes(stream, &header, 1, "int header");
  unsigned char bytes[4];
  switch (header) {
    case oneByte:
      readBytes(stream, bytes, 1, "int as byte");
      return static_cast<int8_t>(bytes[0]);
    case twoBytes:
      readBytes(stream, bytes, 2, "int as short");
      return static_cast<int16_t>(bytes[0] | bytes[1] << 8);
    case fourBytes:
      readBytes(stream, bytes, 4, "int as int");
      return static_cast<int32_t>(bytes[0] | bytes[1] << 8 | bytes[2] << 16 |
                                  static_cast<uint32_t>(bytes[3]) << 24);
    default:
      return static_cast<int8_t>(header) >> 2;
  }
}

void writeBool(iByteOutputStream& stream, bool value) {
  const unsigned char byte = value ? 1 : 0;
  stream.put(&byte, 1);
}

bool readBool(iByteInputStream& stream) {
  unsigned char byte;
  readBytes(stream, &byte, 1, "bool");
  return byte != 0;
}

void writeWide(iByteOutputStream& stream, const wchar_t* text) {
  if (text)
    writeUnits(stream, std::wstring_view(text));
  else
    writeInt(stream, 0);
}

void writeWide(iByteOutputStream& stream, const WideString& text) {
  if (text.isNull())
    writeInt(stream, 0);
  else
    writeUnits(stream, text.view());
}

void writeWide(iByteOutputStream& stream, std::string_view text) { writeUnits(stream, text); }

void writeWide(iByteOutputStream& stream, std::u16string_view text) { writeUnits(stream, text); }

void readWide(iByteInputStream& stream, WideString& text) {
  const int32_t count = checkedCount(readInt(stream));
  if (count < 0) return text.setNull();
  readWideBody(stream, text, count);
}

void readWideBody(iByteInputStream& stream, WideString& text, int32_t count) {
  text.clear();
  if (count == 0) return;
  requireKnownVersion(stream.getSerializationVersion());
  size_t room = 0;
  for (int32_t done = 0; done < count;) {
    const int32_t piece = std::min(count - done, chunkUnits);
    const size_t reached = static_cast<size_t>(done) + static_cast<size_t>(piece);
    if (reached > room) {
      // Doubling keeps long texts linear; the first piece is all that a count alone can claim.
      room = std::min(static_cast<size_t>(count), std::max(reached, room * 2));
      text.reserve(room);
    }
    readUnits(stream, text.data() + done, piece, {done, count});
    done += piece;
    text.setLength(static_cast<size_t>(done));
  }
}

void readWideChars(iByteInputStream& stream, wchar_t* buffer, int32_t count) {
  if (count < 0) refuseCount(count);
  requireKnownVersion(stream.getSerializationVersion());
  readUnits(stream, buffer, count, {0, count});
  if (stream.getSerializationVersion() != rawUtf16Version) buffer[count] = L'\0';
}

int32_t checkedCount(int32_t count) {
  if (count < 0) refuseCount(count);
  return count - 1;
}

void writeNarrow(iByteOutputStream& stream, const char* text) {
  if (!text) return writeInt(stream, 0);
  const size_t length = std::strlen(text);
  if (length >= INT32_MAX) throw Exception(L"A text of %d bytes is too long for a record", length);
  writeInt(stream, static_cast<int32_t>(length) + 1);
  if (length) stream.put(text, length);
}

void readNarrow(iByteInputStream& stream, NarrowString& text) {
  const int32_t count = checkedCount(readInt(stream));
  if (count < 0) return text.setNull();
  text.clear();
  char piece[1024];
  for (int32_t done = 0; done < count;) {
    const size_t want = std::min(static_cast<size_t>(count - done), sizeof piece);
    const size_t got = stream.take(piece, want);
    done += static_cast<int32_t>(got);
    if (got < want) throwEndOfString({done, count});
    text.append({piece, got});
  }
}

void readBytes(iByteInputStream& stream, void* bytes, size_t count, const char* what) {
  if (stream.take(bytes, count) != count) throw Exception(L"EOF reading %hs", what);
}

unsigned encodeUtf8Unit(uint32_t value, unsigned char* out) noexcept {
  if (!out) return 0;
  if (value < 0x80) {
    out[0] = static_cast<unsigned char>(value);
    return 1;
  }
  const unsigned length = value < 0x800       ? 2
                          : value < 0x10000   ? 3
                          : value < 0x200000  ? 4
                          : value > 0x3FFFFFF ? 6
                                              : 5;
  constexpr unsigned char marks[] = {0, 0, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC};
  for (unsigned i = length - 1; i > 0; --i, value >>= 6)
    out[i] = static_cast<unsigned char>(0x80 | (value & 0x3F));
  out[0] = static_cast<unsigned char>(marks[length] | value);
  return length;
}

unsigned utf8UnitLength(unsigned char lead) noexcept {
  if (lead < 0x80) return 1;
  if ((lead & 0xE0) == 0xC0) return 2;
  if ((lead & 0xF0) == 0xE0) return 3;
  // The mask looks at the last bit, not at bit 3, so every even byte from F0 on has four bytes. Records in
  // the field were written and read by this test.
  if ((lead & 0xF1) == 0xF0) return 4;
  if ((lead & 0xFD) == 0xF8) return 5;
  if ((lead & 0xFE) == 0xFC) return 6;
  return 0;
}

unsigned decodeUtf8Unit(const unsigned char* bytes, uint32_t& value) noexcept {
  const unsigned length = utf8UnitLength(bytes[0]);
  const uint32_t lead = bytes[0];
  const auto six = [&](unsigned i) { return bytes[i] & 0x3Fu; };
  const auto four = [&](unsigned i) { return bytes[i] & 0x0Fu; };
  switch (length) {
    case 1:
      value = lead;
      break;
    case 2:
      value = (lead & 0x1F) << 6 | six(1);
      break;
    case 3:
      value = (lead & 0x0F) << 12 | six(1) << 6 | six(2);
      break;
    case 4:
      value = (lead & 0x0F) << 18 | six(1) << 12 | six(2) << 6 | six(3);
      break;
    case 5:
      value = (lead & 0x0F) << 24 | four(1) << 18 | six(2) << 12 | six(3) << 6 | six(4);
      break;
    case 6:
      value = lead << 30 | four(1) << 24 | four(2) << 18 | six(3) << 12 | six(4) << 6 | six(5);
      break;
    default:
      break;
  }
  return length;
}

}  // namespace tovin::coding
