#include "ztcore/ztMemoryStreams.h"

#include <algorithm>
#include <cstring>

#include "tovin/AllocBase.h"
#include "tovinCore/Exception.h"

void ztMemoryByteOutputStream::Free::operator()(unsigned char* block) const noexcept {
  tovin::AllocBase::_free(block);
}

ztMemoryByteOutputStream::ztMemoryByteOutputStream(int serializationVersion) {
  setSerializationVersion(serializationVersion);
}

ztMemoryByteOutputStream::~ztMemoryByteOutputStream() = default;

void ztMemoryByteOutputStream::write(const void* bytes, size_t count) {
  if (count == 0) return;
  const size_t size = GetSize();
  if (count > static_cast<size_t>(end_ - at_)) {
    const size_t room = std::max({size + count, size * 2, size_t{256}});
    auto* block = static_cast<unsigned char*>(tovin::AllocBase::_alloc(room));
    if (!block) throw tovin::MemoryException(1, static_cast<long long>(room));
    if (size) std::memcpy(block, bytes_.get(), size);
    bytes_.reset(block);
    at_ = block + size;
    end_ = block + room;
  }
  std::memcpy(at_, bytes, count);
  at_ += count;
}

void ztMemoryByteOutputStream::CopyTo(tovin::Array<unsigned char>& out) const {
  out.items().assign(bytes_.get(), bytes_.get() + GetSize());
}

ztMemoryByteInputStream::ztMemoryByteInputStream(const void* bytes, size_t count, int serializationVersion) {
  at_ = static_cast<const unsigned char*>(bytes);
  end_ = count ? at_ + count : at_;
  setSerializationVersion(serializationVersion);
}

ztMemoryByteInputStream::ztMemoryByteInputStream(const tovin::Array<unsigned char>& bytes,
                                                 int serializationVersion)
    : ztMemoryByteInputStream(bytes.data(), bytes.getSize(), serializationVersion) {}

ztMemoryByteInputStream::~ztMemoryByteInputStream() = default;

size_t ztMemoryByteInputStream::read(void* bytes, size_t count) {
  const size_t given = std::min(count, GetRemaining());
  if (given) std::memcpy(bytes, at_, given);
  at_ += given;
  return given;
}
