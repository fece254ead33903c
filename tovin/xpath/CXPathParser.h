#pragma once

#include "tovin/FrameworkClass.h"
#include "tovin/iXPathParser.h"

namespace tovin {

/// Evaluates path queries: XPath 1.0 (W3C), straight on the nodes of a tree. docs/queries.md tells the
/// language.
///
///     Ptr<CXPathParser> parser(CXPathParser::allocate());
///     NodeReferenceSet found;
///     parser->evaluate(L"/job/step[@state='failed']", node, iXPathParser::elements, found);
///
/// - Shape: elements are nodes and attributes their properties, but for the node's own value, which only its
///   name selects; a document root above the tree is part of paths and of no result.
/// - Results: node sets and property sets in document order, nothing twice. Numbers are cut to integers,
///   those out of range to the nearest limit; what is no number gives 0 and false.
/// - Errors: "Query \"%ls\": … at position %d" for a text that is no query, or gives no node set where one is
///   asked for.
/// - Threads: one thread at a time, like the tree; compiled queries are shared between all.
class TOVIN_API CXPathParser : public FrameworkClass<CXPathParser, iXPathParser> {
 public:
  static constexpr const char* ClassName = "CXPathParser";
  static const ClassTagDecl Tag;
  static LeakDetector m_leakDetector;
  static ClassImp<CXPathParser> m_class;

  void reset() override { node_ = nullptr; }
  const iNode* getNode() const override { return node_; }
  void setNode(const iNode* node) override { node_ = node; }
  bool evaluate(const wchar_t* expression, const iNode* context, unsigned flags, bool& result) override;
  bool evaluate(const wchar_t* expression, const iNode* context, unsigned flags, int& result) override;
  bool evaluate(const wchar_t* expression, const iNode* context, unsigned flags,
                PropertyReferenceSet& result) override;
  bool evaluate(const wchar_t* expression, const iNode* context, unsigned flags,
                NodeReferenceSet& result) override;
  bool evaluate(const wchar_t* expression, const iNode* context, unsigned flags, WideString& result) override;
  bool select(const wchar_t* expression, unsigned flags, NodeReferenceSet& nodes) override;

 private:
  template <class Body>
  bool run(const char* method, const wchar_t* expression, const iNode* context, Body&& body);

  const iNode* node_ = nullptr;
};

}  // namespace tovin
