#pragma once

#include "tovin/iNode.h"

namespace tovin {

/// Evaluates path queries on node trees. The registered implementation has the tag "DraVolin.CXPathParser".
///
/// - Flags of a query: the node-type selector of the node-set result; 1 elements, 2 the owners of selected
///   attributes, 3 either; 0 counts as 1. Other results pass it over.
/// - Results: true when the expression selected anything.
class TOVIN_API iXPathParser : public virtual CountedObject {
 public:
  static const ClassTagDecl Tag;
  static constexpr unsigned elements = 1;
  static constexpr unsigned attributeOwners = 2;
  /// With the selector: only the first node is wanted.
  static constexpr unsigned firstOnly = 4;

  void* _SeekClassIdentity(const ClassTag& tag) override;

  /// Forgets the node.
  virtual void reset() = 0;
  /// The node that the parser was bound to, a back pointer.
  virtual const iNode* getNode() const = 0;
  virtual void setNode(const iNode* node) = 0;
  virtual bool evaluate(const wchar_t* expression, const iNode* context, unsigned flags, bool& result) = 0;
  virtual bool evaluate(const wchar_t* expression, const iNode* context, unsigned flags, int& result) = 0;
  virtual bool evaluate(const wchar_t* expression, const iNode* context, unsigned flags,
                        PropertyReferenceSet& result) = 0;
  virtual bool evaluate(const wchar_t* expression, const iNode* context, unsigned flags,
                        NodeReferenceSet& result) = 0;
  virtual bool evaluate(const wchar_t* expression, const iNode* context, unsigned flags,
                        WideString& result) = 0;
  /// Adds what the query selects from the bound node; what the set holds already stays.
  virtual bool select(const wchar_t* expression, unsigned flags, NodeReferenceSet& nodes) = 0;
};

}  // namespace tovin
