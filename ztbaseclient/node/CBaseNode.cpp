#include "ztbaseclient/node/CBaseNode.h"

#include "tovin/Constants.h"
#include "ztbaseclient/framework/RecordVersion.h"
#include "ztbaseclient/framework/StreamPrimitives.h"
#include "ztcore/ztUniqueStrings.h"

using tovin::guarded;

const tovin::ClassTagDecl CBaseNode::Tag("DraVolin.data.BaseNode");
tovin::LeakDetector CBaseNode::m_leakDetector(CBaseNode::ClassName);
tovin::PooledClassImp<CBaseNode> CBaseNode::m_class(CBaseNode::Tag, CBaseNode::m_leakDetector);

const int CBaseNode::BASE_NODE_VERSION = 9095;

CBaseNode::CBaseNode(const CBaseNode& other)
    : tovin::Object(other), tovin::CountedObject(other), FrameworkClass(other) {}

CBaseNode& CBaseNode::operator=(const CBaseNode& other) {
  const tovin::Held<const CBaseNode> held(&other);  // it may be below the children that go
  FrameworkClass::operator=(other);
  return *this;
}

CBaseNode::~CBaseNode() = default;

void CBaseNode::WriteClassRecord(tovin::iByteOutputStream& stream) const {
  WriteCompactInt(stream, BASE_NODE_VERSION);
}

void CBaseNode::ReadClassRecord(tovin::iByteInputStream& stream) {
  RecordVersion::require(stream, BASE_NODE_VERSION);
}

void CBaseNode::serialize(tovin::iByteOutputStream& stream) const {
  guarded({ClassName, "serialize"}, [&] {
    WriteClassRecord(stream);
    SerializeNode(stream, true);
  });
}

void CBaseNode::deserialize(tovin::iByteInputStream& stream) {
  guarded({ClassName, "deserialize"}, [&] {
    ReadClassRecord(stream);
    DeserializeNode(stream, true);
  });
}

void CBaseNode::onActivate() {
  static const ztUniqueString generic(tovin::DRV_NODE_Generic);
  OnActivateDefault();
  SetUniqueNodeName(generic);
}

void CBaseNode::onDeactivate() { OnDeactivateDefault(); }
