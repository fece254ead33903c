#include "ztbaseclient/node/CObjectTransportNode.h"

#include "tovin/Constants.h"
#include "ztbaseclient/framework/RecordVersion.h"
#include "ztbaseclient/framework/StreamPrimitives.h"
#include "ztcore/ztMemoryStreams.h"
#include "ztcore/ztUniqueStrings.h"

using tovin::guarded;

const tovin::ClassTagDecl CObjectTransportNode::Tag("DraVolin.data.ObjectTransportNode");
tovin::LeakDetector CObjectTransportNode::m_leakDetector(CObjectTransportNode::ClassName);
tovin::PooledClassImp<CObjectTransportNode> CObjectTransportNode::m_class(
    CObjectTransportNode::Tag, CObjectTransportNode::m_leakDetector);

const int CObjectTransportNode::OBJECT_TRANSPORT_NODE_VERSION = 7075;
const int CObjectTransportNode::OLD_OBJECT_TRANSPORT_NODE_VERSION = 7074;

namespace {

// Bytes that only the older record has, behind the object flag.
constexpr int oldRecordExtraBytes = 2;

constexpr int deepestCarriers = 1000;

// Counts how deep carried objects lie inside one another while one of their records is written or read.
class CarrierDepth {
 public:
  CarrierDepth() {
    if (depth_ == deepestCarriers) {
      throw tovin::Exception(L"Carried objects are nested deeper than %d", deepestCarriers);
    }
    ++depth_;
  }
  CarrierDepth(const CarrierDepth&) = delete;
  CarrierDepth& operator=(const CarrierDepth&) = delete;
  ~CarrierDepth() { --depth_; }

 private:
  static thread_local int depth_;
};

thread_local int CarrierDepth::depth_ = 0;

tovin::CountedObject* countedOf(tovin::Object* object) { return tovin::seek<tovin::CountedObject>(object); }

}  // namespace

CObjectTransportNode::CObjectTransportNode(const CObjectTransportNode& other)
    : tovin::Object(other), tovin::CountedObject(other), FrameworkClass(other) {
  guarded({ClassName, ClassName}, [&] { takeCopy(other, copyFor(other)); });
}

CObjectTransportNode& CObjectTransportNode::operator=(const CObjectTransportNode& other) {
  guarded({ClassName, "operator="}, [&] {
    const tovin::Held<const CObjectTransportNode> held(&other);  // it may be below the children that go
    OwnedObject copy = copyFor(other);
    FrameworkClass::operator=(other);
    takeCopy(other, std::move(copy));
  });
  return *this;
}

CObjectTransportNode::~CObjectTransportNode() {
  tovin::guardedDestruction(ClassName, [&] { ReleaseObject(); });
}

// A copy of the source's object, null where none is needed.
CObjectTransportNode::OwnedObject CObjectTransportNode::copyFor(const CObjectTransportNode& source) const {
  const bool needed = source.object_ && object_ != source.object_;
  return OwnedObject(needed ? source.object_->clone() : nullptr);
}

// The object held before is left as it is, on purpose: somebody may still count on it.
void CObjectTransportNode::takeCopy(const CObjectTransportNode& source, OwnedObject copy) {
  if (copy)
    hold(copy.detach());
  else if (!source.object_)
    ReleaseObject();
}

void CObjectTransportNode::hold(tovin::Object* object) {
  object_ = object;
  if (tovin::CountedObject* counted = countedOf(object)) counted->addRef();
}

void CObjectTransportNode::SetObject(tovin::Object* object) {
  guarded({ClassName, "SetObject"}, [&] {
    if (object && object == object_) return;
    ReleaseObject();
    hold(object);
  });
}

void CObjectTransportNode::ReleaseObject() {
  guarded({ClassName, "ReleaseObject"}, [&] {
    if (tovin::iNode* node = SurrenderObject()) return ReleaseNode(node);
    tovin::Object* object = std::exchange(object_, nullptr);
    if (tovin::CountedObject* counted = countedOf(object))
      counted->release();
    else if (object)
      object->deleteInstance();
  });
}

bool CObjectTransportNode::HoldsNode() const {
  const tovin::CountedObject* counted = countedOf(object_);
  return counted && counted->getRefCount() == 1 && tovin::seek<tovin::iNode>(object_);
}

tovin::iNode* CObjectTransportNode::SurrenderObject() {
  return HoldsNode() ? tovin::seek<tovin::iNode>(std::exchange(object_, nullptr)) : nullptr;
}

tovin::iNode* CObjectTransportNode::cloneNode(bool /*deep*/) const {
  return guarded({ClassName, "cloneNode"}, [&]() -> tovin::iNode* {
    tovin::Ptr<CObjectTransportNode> copy(tovin::seek<CObjectTransportNode>(newInstance()));
    // Without an object nothing is copied: the result is an empty node.
    if (object_) {
      ztMemoryByteOutputStream out;
      serialize(out);
      ztMemoryByteInputStream in(out.GetBytes(), out.GetSize());
      copy->deserialize(in);
    }
    return copy.detachUncounted();
  });
}

void CObjectTransportNode::WriteClassRecord(tovin::iByteOutputStream& stream) const {
  WriteCompactInt(stream, OBJECT_TRANSPORT_NODE_VERSION);
  WriteBool(stream, object_ != nullptr);
  if (!object_) return;
  const CarrierDepth deeper;
  WriteNarrowString(stream, object_->getClassTag());
  object_->serialize(stream);
}

void CObjectTransportNode::ReadClassRecord(tovin::iByteInputStream& stream) {
  object_ = nullptr;  // dropped without being released, on purpose
  const int32_t version =
      RecordVersion::requireEither(stream, OBJECT_TRANSPORT_NODE_VERSION, OLD_OBJECT_TRANSPORT_NODE_VERSION);
  const bool carries = ReadBool(stream);
  if (version == OLD_OBJECT_TRANSPORT_NODE_VERSION) {
    for (int i = 0; i < oldRecordExtraBytes; ++i) ReadBool(stream);
  }
  if (carries) readObject(stream);
}

void CObjectTransportNode::readObject(tovin::iByteInputStream& stream) {
  const CarrierDepth deeper;
  tovin::NarrowString name;
  ReadNarrowString(stream, name);
  tovin::MemPtr<tovin::Object, tovin::InstanceDeallocator> made(
      tovin::Class::requireClass(tovin::ClassTag(name.c_str())).newInstance());
  made->deserialize(stream);
  ReleaseObject();
  hold(made.detach());
}

void CObjectTransportNode::serialize(tovin::iByteOutputStream& stream) const {
  guarded({ClassName, "serialize"}, [&] {
    WriteClassRecord(stream);
    SerializeNode(stream, true);
  });
}

void CObjectTransportNode::deserialize(tovin::iByteInputStream& stream) {
  guarded({ClassName, "deserialize"}, [&] {
    ReadClassRecord(stream);
    DeserializeNode(stream, true);
  });
}

void CObjectTransportNode::onActivate() {
  static const ztUniqueString className(tovin::DRV_ObjectTransportClassName);
  OnActivateDefault();
  SetUniqueNodeName(className);
}

void CObjectTransportNode::onDeactivate() {
  ReleaseObject();
  OnDeactivateDefault();
}
