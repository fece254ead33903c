#pragma once

#include "tovin/iXPathParser.h"
#include "tovinCore/LeakDetector.h"
#include "ztbaseclient/Export.h"

/// The context of one path query: parser, node, what kind of result is meant, and which attribute of the
/// node.
///
/// - Ownership: borrows parser and node.
class ZTBASECLIENT_API cppNodeQueryData {
 public:
  static constexpr const char* ClassName = "cppNodeQueryData";
  static tovin::LeakDetector m_leakDetector;

  /// The node-type selector of queries for node sets.
  enum NodeType { Element = 1, Attribute = 2, Either = 3 };

  cppNodeQueryData();
  cppNodeQueryData(tovin::iXPathParser* parser, const tovin::iNode* node, NodeType nodeType,
                   long attributesIndex);
  cppNodeQueryData(const cppNodeQueryData& other);
  cppNodeQueryData& operator=(const cppNodeQueryData&) = default;
  virtual ~cppNodeQueryData();

  tovin::iXPathParser* getXPathParser() const { return parser_; }
  void setXPathParser(tovin::iXPathParser* parser) { parser_ = parser; }
  const tovin::iNode* getNode() const { return node_; }
  void setNode(const tovin::iNode* node) { node_ = node; }
  virtual NodeType getNodeType() const { return nodeType_; }
  virtual void setNodeType(NodeType nodeType) { nodeType_ = nodeType; }
  /// -1 for none.
  long getAttributesIndex() const { return attributesIndex_; }
  void setAttributesIndex(long index) { attributesIndex_ = index; }

 private:
  tovin::iXPathParser* parser_ = nullptr;
  const tovin::iNode* node_ = nullptr;
  NodeType nodeType_ = Element;
  long attributesIndex_ = -1;
};
