#include "ztbaseclient/node/cppNodeQueryData.h"

tovin::LeakDetector cppNodeQueryData::m_leakDetector(cppNodeQueryData::ClassName);

cppNodeQueryData::cppNodeQueryData() { m_leakDetector.Add(this, ClassName); }

cppNodeQueryData::cppNodeQueryData(tovin::iXPathParser* parser, const tovin::iNode* node, NodeType nodeType,
                                   long attributesIndex)
    : parser_(parser), node_(node), nodeType_(nodeType), attributesIndex_(attributesIndex) {
  m_leakDetector.Add(this, ClassName);
}

cppNodeQueryData::cppNodeQueryData(const cppNodeQueryData& other)
    : cppNodeQueryData(other.parser_, other.node_, other.nodeType_, other.attributesIndex_) {}

cppNodeQueryData::~cppNodeQueryData() { m_leakDetector.Sub(this); }
