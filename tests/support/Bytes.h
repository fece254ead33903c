#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tovin/Array.h"
#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "ztclient/terminal/WarningScope.h"
#include "ztcore/ztMemoryStreams.h"

/// Bytes as tests write them: pairs of hexadecimal digits, with blanks where a reader wants them.
namespace testsupport {

std::string hex(const unsigned char* bytes, size_t count);
inline std::string hex(const std::string& bytes) {
  return hex(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
}
/// Refuses anything but digits, blanks, line ends, and comments from '#' to the end of the line.
std::string unhex(const std::string& text);
/// The bytes of a file of hexadecimal digits under tests/data.
std::string unhexFile(const std::string& name);
/// The units of a text in the byte order of a file.
std::string utf16(const std::wstring& text, bool bigEndian = false);
/// Bytes as the library takes them.
tovin::Array<unsigned char> arrayOf(const std::string& bytes);

using Writer = ztMemoryByteOutputStream;
inline std::string hex(const Writer& out) { return hex(out.GetBytes(), out.GetSize()); }
inline std::string bytesOf(const Writer& out) {
  return std::string(reinterpret_cast<const char*>(out.GetBytes()), out.GetSize());
}

/// A stream over bytes of its own.
class Reader : private std::string, public ztMemoryByteInputStream {
 public:
  explicit Reader(const char* hexadecimal, int version = tovin::currentSerializationVersion)
      : Reader(unhex(hexadecimal), version) {}
  explicit Reader(const std::string& bytes, int version)
      : std::string(bytes), ztMemoryByteInputStream(std::string::data(), std::string::size(), version) {}
  explicit Reader(const Writer& out) : Reader(bytesOf(out), out.getSerializationVersion()) {}
};

/// Reads an object from the record of another.
template <class From, class To>
void readFrom(const From& from, To& to, int version = tovin::currentSerializationVersion) {
  Writer out(version);
  from.serialize(out);
  Reader in(out);
  to.deserialize(in);
}

/// The message of the framework exception that the body raises.
template <class Body>
std::string messageOf(Body&& body) {
  try {
    body();
  } catch (const tovin::Exception& e) {
    return tovin::wideToUtf8(e.getMessage());
  }
  return "nothing was raised";
}

/// Expects a framework exception with exactly this text.
template <class Body>
void expectMessage(const std::wstring& message, Body&& body) {
  EXPECT_EQ(testsupport::messageOf(std::forward<Body>(body)), tovin::wideToUtf8(message));
}

/// The warnings that the body gives, one behind the other.
template <class Body>
std::wstring warningsOf(Body&& body) {
  std::wstring warnings;
  const WarningScope scope([&](const wchar_t* text) { warnings += text; });
  body();
  return warnings;
}

/// The calls that the exception passed, as "Class.method Class.method ".
template <class Body>
std::string trailOf(Body&& body) {
  std::string trail;
  try {
    body();
  } catch (const tovin::Exception& e) {
    for (const tovin::CatchEntry& entry : e.getTrail())
      trail += std::string(entry.className) + "." + entry.method + " ";
  }
  return trail;
}

}  // namespace testsupport
