#include "tovin/Object.h"

#include <cstdint>
#include <new>

#include "tovinCore/Exception.h"

namespace tovin {

std::atomic<bool> Object::m_dontUsePools{false};

namespace {

// Where the last `new` of a pooled class on this thread put its object, until its constructor runs.
struct NewMemory {
  const std::byte* begin = nullptr;
  size_t size = 0;
};
thread_local NewMemory newest;

}  // namespace

void* PooledObject::operator new(size_t size) {
  void* memory = ::operator new(size);
  newest = {static_cast<const std::byte*>(memory), size};
  return memory;
}

void PooledObject::operator delete(void* memory) noexcept { ::operator delete(memory); }

PooledObject::Origin PooledObject::originOf(const PooledObject* object) noexcept {
  const auto address = reinterpret_cast<uintptr_t>(object), begin = reinterpret_cast<uintptr_t>(newest.begin);
  if (address - begin >= newest.size) return Origin::elsewhere;
  newest = {};
  return Origin::plainNew;
}

const ClassTagDecl CountedObject::Tag("DraVolin.CountedObject");

Object::~Object() = default;
CountedObject::~CountedObject() = default;
PooledObject::~PooledObject() = default;

void* Object::_SeekClassIdentity(const ClassTag&) { return nullptr; }

void* CountedObject::_SeekClassIdentity(const ClassTag& tag) { return tag == Tag ? this : nullptr; }

void Object::serialize(iByteOutputStream&) const {
  throw Exception(L"Class %hs has no record", getClassTag());
}

void Object::deserialize(iByteInputStream&) { throw Exception(L"Class %hs has no record", getClassTag()); }

void CountedObject::requireUnreferenced() const {
  const int count = getRefCount();
  if (count != 0) throw Exception(L"Tried to deleteInstance() an object with nonzero ref count: %d\n", count);
}

}  // namespace tovin
