// The credentials string: how a record is written into it and read from it. docs/formats.md has the layout.
#include <algorithm>
#include <cstring>

#include "tovinCore/Base64.h"
#include "tovinCore/Units.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/auth/CCredentials.h"
#include "ztbaseclient/auth/CredentialsCipher.h"
#include "ztbaseclient/framework/StreamPrimitives.h"

using tovin::guarded;
namespace base64 = tovin::base64;

namespace {

constexpr unsigned checksumSeed = 32;
constexpr size_t longestBitCount = 6;

// Offsets in the header, and what follows it.
namespace in_header {
constexpr size_t version = 0, randomNumber = 1, encryptedLength = 2, quickChecksum = 4, flags = 8, end = 12;
}

// Offsets in the body, up to the first text.
namespace in_body {
constexpr size_t flags = 0, serverIP = 4, clientIP = 8, loginTime = 12, texts = 20;
}

template <class T>
void putLittle(unsigned char* to, T value) noexcept {
  for (size_t i = 0; i < sizeof(T); ++i) to[i] = static_cast<unsigned char>(value >> 8 * i);
}

template <class T>
T getLittle(const unsigned char* from) noexcept {
  uint64_t value = 0;
  for (size_t i = 0; i < sizeof(T); ++i) value |= uint64_t{from[i]} << 8 * i;
  return static_cast<T>(value);
}

void requireBytes(std::span<const unsigned char> source, size_t count) {
  if (source.size() < count) throw tovin::Exception(L"Decode failed");
}

// Takes a field of the clear body off its front.
template <class T>
T takeLittle(std::span<const unsigned char>& source) {
  requireBytes(source, sizeof(T));
  const T value = getLittle<T>(source.data());
  source = source.subspan(sizeof(T));
  return value;
}

in_addr takeAddress(std::span<const unsigned char>& source) {
  in_addr address;
  requireBytes(source, sizeof address);
  std::memcpy(&address, source.data(), sizeof address);
  source = source.subspan(sizeof address);
  return address;
}

}  // namespace

unsigned char* CCredentials::bodyAt(size_t position) noexcept {
  return buffer_.data() + in_header::end + position;
}

unsigned CCredentials::GetNumBitsLength(const CAuthRoles& roles) noexcept {
  unsigned char form[longestBitCount];
  return EncodeUtf8Unit(roles.GetRoleBits().getNumBits(), form);
}

size_t CCredentials::GetNumBytes(const CAuthRoles& roles) noexcept {
  return (size_t{roles.GetRoleBits().getNumBits()} + 7) / 8;
}

size_t CCredentials::CalcClearBodyLen() const {
  size_t length = in_body::texts + textCount;
  for (const Text& text : body_.texts) length += tovin::countUnits(text.text().view());
  if (!hasOldFormat()) length += GetNumBitsLength(roles_) + GetNumBytes(roles_);
  return length;
}

// Block by block, of a size that compilers add up at once.
unsigned CCredentials::CalcChecksum(const unsigned char* bytes, size_t count) noexcept {
  constexpr size_t block = 16;
  const unsigned char* const end = bytes + count;
  unsigned sum = checksumSeed;
  for (; static_cast<size_t>(end - bytes) >= block; bytes += block) {
    for (size_t i = 0; i < block; ++i) sum += bytes[i];
  }
  while (bytes != end) sum += *bytes++;
  return sum;
}

void CCredentials::writeHeader() noexcept {
  unsigned char* to = buffer_.data();
  to[in_header::version] = header_.formatVersion;
  to[in_header::randomNumber] = header_.randomNumber;
  putLittle(to + in_header::encryptedLength, header_.encryptedLength);
  putLittle(to + in_header::quickChecksum, header_.quickChecksum);
  putLittle(to + in_header::flags, header_.flags);
}

void CCredentials::readHeader() noexcept {
  const unsigned char* from = buffer_.data();
  header_.formatVersion = from[in_header::version];
  header_.randomNumber = from[in_header::randomNumber];
  header_.encryptedLength = getLittle<int16_t>(from + in_header::encryptedLength);
  header_.quickChecksum = getLittle<uint32_t>(from + in_header::quickChecksum);
  header_.flags = getLittle<uint32_t>(from + in_header::flags);
}

void CCredentials::writeBody() {
  putLittle(bodyAt(in_body::flags), body_.flags);
  std::memcpy(bodyAt(in_body::serverIP), &body_.serverIP, sizeof(in_addr));
  std::memcpy(bodyAt(in_body::clientIP), &body_.clientIP, sizeof(in_addr));
  putLittle(bodyAt(in_body::loginTime), body_.loginTime);
  size_t at = in_body::texts;
  for (const Text& text : body_.texts) at += AppendString(at, text.text());
  AppendBitsetValue(at, roles_.GetRoleBits());
}

// Fills the record when all of the body is there, and nothing of it before.
void CCredentials::readBody(Bytes source) {
  Body fresh;
  fresh.flags = takeLittle<uint32_t>(source);
  fresh.serverIP = takeAddress(source);
  fresh.clientIP = takeAddress(source);
  fresh.loginTime = hasOldFormat() ? takeLittle<uint32_t>(source) : takeLittle<int64_t>(source);
  for (Text& text : fresh.texts) source = source.subspan(AssignString(text, source));
  if (!hasOldFormat()) {
    tovin::BitsetValue bits;
    AssignBitsetValue(bits, source);
    roles_.SetRoleBits(bits);
  }
  body_ = std::move(fresh);
}

// The length byte keeps the low 8 bits of the count: readers in the field expect one byte, whatever it says.
size_t CCredentials::AppendString(size_t position, const tovin::WideString& text) {
  return guarded({ClassName, "appendString"}, [&] {
    const size_t bytes = tovin::utf8Length(text.view());
    const bool isAscii = bytes == text.getLength();  // then the estimate was right
    if (!isAscii) buffer_.resize(buffer_.size() + bytes - tovin::countUnits(text.view()));
    unsigned char* to = bodyAt(position);
    *to = static_cast<unsigned char>(bytes);
    tovin::wideToUtf8(text.view(), reinterpret_cast<char*>(to + 1));
    return bytes + 1;
  });
}

// A zero ends the text early, but not the field: the reader goes on behind all of it.
size_t CCredentials::AssignString(Text& out, Bytes source) {
  return guarded({ClassName, "AssignString"}, [&] {
    requireBytes(source, 1);
    const size_t length = source[0];
    requireBytes(source, 1 + length);
    std::string_view text(reinterpret_cast<const char*>(source.data() + 1), length);
    text = text.substr(0, text.find('\0'));
    if (!text.empty()) out.shorten(tovin::utf8ToWide(text, out.allocate(text.size())));
    return 1 + length;
  });
}

size_t CCredentials::AppendBitsetValue(size_t position, const tovin::BitsetValue& bits) {
  return guarded({ClassName, "AppendBitsetValue"}, [&] {
    const size_t count = EncodeUtf8Unit(bits.getNumBits(), bodyAt(position));
    const std::string bytes = bits.getBytes();
    std::copy(bytes.begin(), bytes.end(), bodyAt(position + count));
    return count + bytes.size();
  });
}

// Bits of the last byte beyond the count are dropped: a bit beyond the end is off, and must stay so when the
// set grows.
size_t CCredentials::AssignBitsetValue(tovin::BitsetValue& bits, Bytes source) {
  return guarded({ClassName, "AssignBitsetValue"}, [&] {
    requireBytes(source, 1);
    const size_t count = tovin::coding::utf8UnitLength(source[0]);
    if (count == 0) throw tovin::Exception(L"Decode failed");
    requireBytes(source, count);
    uint32_t numBits = 0;
    DecodeUtf8Unit(source.data(), numBits);
    const size_t bytes = (size_t{numBits} + 7) / 8;
    requireBytes(source, count + bytes);
    bits.setBytes(source.data() + count, numBits);
    return count + bytes;
  });
}

int16_t CCredentials::DoEncryption() {
  return guarded({ClassName, "DoEncryption"}, [&] {
    tovin::Array<unsigned char> cipher;
    credentialscipher::encipher(bodyAt(0), buffer_.size() - in_header::end, cipher);
    buffer_.resize(in_header::end + cipher.getSize());
    std::copy(cipher.begin(), cipher.end(), bodyAt(0));
    return static_cast<int16_t>(cipher.getSize());
  });
}

tovin::SecretBytes CCredentials::DoDecryption() const {
  return guarded({ClassName, "DoDecryption"}, [&] {
    const std::optional<Bytes> section = encryptedSection();
    if (!section) throw tovin::Exception(L"Decrypt failed");
    tovin::SecretBytes clear;
    credentialscipher::decipher(
        tovin::Array<unsigned char>(std::vector<unsigned char>(section->begin(), section->end())), clear);
    return clear;
  });
}

// What the header says is enciphered; none when the buffer does not hold so much.
std::optional<CCredentials::Bytes> CCredentials::encryptedSection() const noexcept {
  const Bytes body = Bytes(buffer_).subspan(std::min(buffer_.size(), in_header::end));
  const int16_t length = header_.encryptedLength;
  if (length < 0 || static_cast<size_t>(length) > body.size()) return std::nullopt;
  return body.first(static_cast<size_t>(length));
}

bool CCredentials::VerifyChecksum() const noexcept {
  const std::optional<Bytes> section = encryptedSection();
  return section && CalcChecksum(section->data(), section->size()) == header_.quickChecksum;
}

// The length field has 16 bits and a sign. Looked at first, so that a refused record is as it was.
void CCredentials::requireRoom() const {
  size_t clear = in_body::texts + textCount + GetNumBitsLength(roles_) + GetNumBytes(roles_);
  for (const Text& text : body_.texts) clear += tovin::utf8Length(text.text().view());
  const size_t enciphered = credentialscipher::encipheredLength(clear);
  if (enciphered > INT16_MAX)
    throw tovin::Exception(L"Credentials of %d enciphered bytes are too long", enciphered);
}

void CCredentials::GenerateCredentialsString(tovin::WideString& out) {
  guarded({ClassName, "GenerateCredentialsString"}, [&] {
    requireRoom();
    const Header headerBefore = header_;
    tovin::SecretBytes bufferBefore;
    bufferBefore.swap(buffer_);
    try {
      encodeBuffer();
      out.setLength(base64::encodedLength(buffer_.size()));
    } catch (...) {
      buffer_.swap(bufferBefore);
      header_ = headerBefore;
      throw;
    }
    isBodyRead_ = false;
    base64::encode(buffer_.data(), buffer_.size(), out.data());
  });
}

void CCredentials::encodeBuffer() {
  header_.formatVersion = currentFormat;
  buffer_.assign(in_header::end + CalcClearBodyLen(), 0);
  writeBody();
  header_.encryptedLength = DoEncryption();
  header_.quickChecksum = CalcChecksum(bodyAt(0), buffer_.size() - in_header::end);
  writeHeader();
}

void CCredentials::SetCredentialsString(const wchar_t* text) {
  guarded({ClassName, "SetCredentialsString"}, [&] {
    if (!text || !*text) throw tovin::Exception(L"Empty Credentials");
    const std::wstring_view characters(text);
    tovin::SecretBytes decoded(base64::decodedRoom(characters.size()));
    size_t count = 0;
    const bool isBase64 = base64::decode(characters, decoded.data(), count);
    Clear();  // not before: the text may be one of this record's own
    decoded.resize(count);
    buffer_ = std::move(decoded);
    if (!isBase64 || count < in_header::end) throw tovin::Exception(L"Error decoding");
    readHeader();
  });
}

// What was read gives up its place in the buffer, which keeps its size: its checksum is no longer right, and
// there is nothing left to decipher.
void CCredentials::DecryptBody() {
  guarded({ClassName, "DecryptBody"}, [&] {
    if (isBodyRead_) return;
    const tovin::SecretBytes clear = DoDecryption();
    readBody(clear);
    tovin::wipe(bodyAt(0), clear.size());
    isBodyRead_ = true;
  });
}

void CCredentials::GetUserNameFromSessionId(const wchar_t* sessionId, tovin::WideString& userName) {
  guarded({ClassName, "GetUserNameFromSessionId"}, [&] {
    CCredentials session;
    session.SetCredentialsString(sessionId);
    session.DecryptBody();
    userName = session.GetUsername();
  });
}
