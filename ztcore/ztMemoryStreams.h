#pragma once

#include <memory>

#include "tovin/Array.h"
#include "tovin/ByteStreams.h"
#include "ztcore/Export.h"

/// Collects what is written to it.
///
/// - Ownership: owns its bytes; GetBytes() borrows them until the next write.
class ZTCORE_API ztMemoryByteOutputStream : public tovin::iByteOutputStream {
 public:
  explicit ztMemoryByteOutputStream(int serializationVersion = tovin::currentSerializationVersion);
  ztMemoryByteOutputStream(const ztMemoryByteOutputStream&) = delete;
  ztMemoryByteOutputStream& operator=(const ztMemoryByteOutputStream&) = delete;
  ~ztMemoryByteOutputStream() override;

  void write(const void* bytes, size_t count) override;

  const unsigned char* GetBytes() const noexcept { return bytes_.get(); }
  size_t GetSize() const noexcept { return static_cast<size_t>(at_ - bytes_.get()); }
  void CopyTo(tovin::Array<unsigned char>& out) const;

 private:
  struct Free {
    void operator()(unsigned char* block) const noexcept;
  };
  // Raw memory rather than a vector: the room ahead needs no zeros.
  std::unique_ptr<unsigned char, Free> bytes_;
};

/// Reads from bytes that somebody else keeps.
///
/// - Ownership: borrows the bytes.
class ZTCORE_API ztMemoryByteInputStream : public tovin::iByteInputStream {
 public:
  ztMemoryByteInputStream(const void* bytes, size_t count,
                          int serializationVersion = tovin::currentSerializationVersion);
  explicit ztMemoryByteInputStream(const tovin::Array<unsigned char>& bytes,
                                   int serializationVersion = tovin::currentSerializationVersion);
  ~ztMemoryByteInputStream() override;

  size_t read(void* bytes, size_t count) override;
  /// Bytes not read yet.
  size_t GetRemaining() const noexcept { return static_cast<size_t>(end_ - at_); }
};
