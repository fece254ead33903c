#pragma once

#include <cstddef>
#include <cstring>

#include "tovin/Export.h"

namespace tovin {

/// The serialization version of a stream whose creator says nothing else.
inline constexpr int currentSerializationVersion = 3;

/// Takes bytes in order. A stream class implements write(); one that has room in memory may lend it as a
/// window, so that small pieces cost no virtual call.
class TOVIN_API iByteOutputStream {
 public:
  virtual ~iByteOutputStream();

  /// Writes a block; a failure is an exception.
  virtual void write(const void* bytes, size_t count) = 0;

  int getSerializationVersion() const noexcept { return version_; }
  void setSerializationVersion(int version) noexcept { version_ = version; }

  /// write(), by way of the window where it has the room.
  void put(const void* bytes, size_t count) {
    if (count >= static_cast<size_t>(end_ - at_)) return write(bytes, count);
    std::memcpy(at_, bytes, count);
    at_ += count;
  }

 protected:
  iByteOutputStream() = default;
  iByteOutputStream(const iByteOutputStream&) = default;
  iByteOutputStream& operator=(const iByteOutputStream&) = default;

  unsigned char* at_ = nullptr;
  unsigned char* end_ = nullptr;

 private:
  int version_ = currentSerializationVersion;
};

/// Gives bytes in order; a short read is the only sign of the end.
class TOVIN_API iByteInputStream {
 public:
  virtual ~iByteInputStream();

  /// Reads a block; returns how many bytes arrived, fewer than asked for only at the end.
  virtual size_t read(void* bytes, size_t count) = 0;

  int getSerializationVersion() const noexcept { return version_; }
  void setSerializationVersion(int version) noexcept { version_ = version; }

  /// read(), by way of the window where it holds enough.
  size_t take(void* bytes, size_t count) {
    if (count >= static_cast<size_t>(end_ - at_)) return read(bytes, count);
    std::memcpy(bytes, at_, count);
    at_ += count;
    return count;
  }

 protected:
  iByteInputStream() = default;
  iByteInputStream(const iByteInputStream&) = default;
  iByteInputStream& operator=(const iByteInputStream&) = default;

  const unsigned char* at_ = nullptr;
  const unsigned char* end_ = nullptr;

 private:
  int version_ = currentSerializationVersion;
};

}  // namespace tovin
