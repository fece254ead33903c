#include "tovin/Object.h"

#include "tovinCore/Exception.h"

namespace tovin {

std::atomic<bool> Object::m_dontUsePools{false};

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
