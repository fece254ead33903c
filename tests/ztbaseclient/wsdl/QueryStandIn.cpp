// Answers the few path queries of the reader of schemas, so that its tests need no evaluator of all of XPath.
#include <string_view>

#include "tovin/FrameworkClass.h"
#include "tovin/iXPathParser.h"

namespace {

class QueryStandIn : public tovin::FrameworkClass<QueryStandIn, tovin::iXPathParser> {
 public:
  static constexpr const char* ClassName = "QueryStandIn";
  static const tovin::ClassTagDecl Tag;
  static tovin::LeakDetector m_leakDetector;
  static tovin::ClassImp<QueryStandIn> m_class;

  void reset() override {}
  const tovin::iNode* getNode() const override { return nullptr; }
  void setNode(const tovin::iNode*) override {}
  void serialize(tovin::iByteOutputStream&) const override {}
  void deserialize(tovin::iByteInputStream&) override {}

  bool evaluate(const wchar_t*, const tovin::iNode*, unsigned, bool&) override { return refuse(); }
  bool evaluate(const wchar_t*, const tovin::iNode*, unsigned, int&) override { return refuse(); }
  bool evaluate(const wchar_t*, const tovin::iNode*, unsigned, tovin::WideString&) override {
    return refuse();
  }
  bool evaluate(const wchar_t*, const tovin::iNode*, unsigned, tovin::PropertyReferenceSet&) override {
    return refuse();
  }
  bool evaluate(const wchar_t* expression, const tovin::iNode* context, unsigned,
                tovin::NodeReferenceSet& result) override {
    std::vector<tovin::iNode*> left{const_cast<tovin::iNode*>(context->getRoot())};
    while (!left.empty()) {
      tovin::iNode* node = left.back();
      left.pop_back();
      if (selects(expression, *node)) result.add(node);
      for (unsigned i = node->getNumberOfChildren(); i > 0; --i) left.push_back(node->getChildAt(i - 1));
    }
    return !result.isEmpty();
  }

 private:
  static bool refuse() { throw tovin::Exception(L"not a query of the reader"); }

  static std::wstring attribute(const tovin::iNode& node, const wchar_t* name) {
    if (!node.hasProperties()) return {};
    const tovin::iProperty* property = node.getProperties()->find(name);
    return property ? std::wstring(property->getValue().getText().view()) : std::wstring();
  }

  static bool selects(std::wstring_view expression, const tovin::iNode& node) {
    const std::wstring_view name = node.getName() ? node.getName() : L"";
    if (name.substr(name.find(L':') + 1) != L"element") return false;
    const std::wstring least = attribute(node, L"minOccurs");
    if (expression.ends_with(L"[not(@form)]")) return attribute(node, L"form").empty();
    if (expression.ends_with(L"[@minOccurs<1]")) return least == L"0";
    if (expression.ends_with(L"[@minOccurs>=1 or not(@minOccurs)]")) return least != L"0";
    return refuse();
  }
};

const tovin::ClassTagDecl QueryStandIn::Tag("DraVolin.CXPathParser");
tovin::LeakDetector QueryStandIn::m_leakDetector(QueryStandIn::ClassName);
tovin::ClassImp<QueryStandIn> QueryStandIn::m_class(QueryStandIn::Tag, QueryStandIn::m_leakDetector);

}  // namespace
