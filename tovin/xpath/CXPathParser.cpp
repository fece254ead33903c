#include "tovin/xpath/CXPathParser.h"

#include <climits>
#include <cmath>
#include <utility>

#include "tovin/xpath/Evaluator.h"
#include "tovin/xpath/ExpressionCache.h"

namespace tovin {

const ClassTagDecl CXPathParser::Tag("DraVolin.CXPathParser");
LeakDetector CXPathParser::m_leakDetector(CXPathParser::ClassName);
ClassImp<CXPathParser> CXPathParser::m_class(CXPathParser::Tag, CXPathParser::m_leakDetector);

namespace {

using xpath::Context;
using xpath::Evaluator;
using xpath::Item;
using xpath::Type;

// One query as it is answered: its expression, and the evaluation with its context.
struct Query {
  Query(const wchar_t* text, const iNode& node)
      : expression(xpath::ExpressionCache::shared().get(text)),
        evaluator(*expression, node),
        context{{&node}} {}

  bool givesNodes() const { return expression->terms[expression->root].type == Type::nodes; }

  void requireNodes() const {
    if (!givesNodes()) {
      xpath::Lexer(expression->source).fail(L"nodes are asked for, and this is no node set,");
    }
  }

  // The document root is no node of the tree.
  template <class Visit>
  void visit(Visit&& visit) {
    evaluator.visitNodes(expression->root, context,
                         [&](const Item& item) { return item.isRoot() || visit(item); });
  }

  bool first(Item& found) {
    bool any = false;
    visit([&](const Item& item) {
      found = item;
      any = true;
      return false;
    });
    return any;
  }

  std::shared_ptr<const xpath::Expression> expression;
  Evaluator evaluator;
  Context context;
};

int cutToInteger(double number) {
  if (number >= INT_MAX) return INT_MAX;
  if (number <= INT_MIN) return INT_MIN;
  return static_cast<int>(number);
}

// An element, or the owner of an attribute, as the selector has it.
bool isWanted(const Item& item, unsigned flags) {
  constexpr unsigned selector = iXPathParser::elements | iXPathParser::attributeOwners;
  if (!(flags & selector)) flags |= iXPathParser::elements;
  return flags & (item.isAttribute() ? iXPathParser::attributeOwners : iXPathParser::elements);
}

// Nodes in document order: attributes of one owner follow each other.
bool selectNodes(Query& query, unsigned flags, NodeReferenceSet& nodes) {
  query.requireNodes();
  const iNode* before = nullptr;
  query.visit([&](const Item& item) {
    if (!isWanted(item, flags) || item.element == before) return true;
    nodes.add(const_cast<iNode*>(item.element));
    before = item.element;
    return !(flags & iXPathParser::firstOnly);
  });
  return before != nullptr;
}

}  // namespace

template <class Body>
bool CXPathParser::run(const char* method, const wchar_t* expression, const iNode* context, Body&& body) {
  return guarded({ClassName, method}, [&] {
    if (!expression) throw Exception(L"A query needs an expression");
    if (!context) throw Exception(L"A query needs a node to begin at");
    Query query(expression, *context);
    return body(query);
  });
}

bool CXPathParser::evaluate(const wchar_t* expression, const iNode* context, unsigned, bool& result) {
  result = false;
  return run("evaluate(bool)", expression, context, [&](Query& query) {
    Item first;
    if (query.givesNodes()) return result = query.first(first);
    result = query.evaluator.boolean(query.expression->root, query.context);
    return true;
  });
}

bool CXPathParser::evaluate(const wchar_t* expression, const iNode* context, unsigned, int& result) {
  result = 0;
  return run("evaluate(int)", expression, context, [&](Query& query) {
    const double number = query.evaluator.number(query.expression->root, query.context);
    Item first;
    if (std::isnan(number) || (query.givesNodes() && !query.first(first))) return false;
    result = cutToInteger(number);
    return true;
  });
}

bool CXPathParser::evaluate(const wchar_t* expression, const iNode* context, unsigned,
                            PropertyReferenceSet& result) {
  return refill(result, [&](PropertyReferenceSet& found) {
    return run("evaluate(properties)", expression, context, [&](Query& query) {
      query.requireNodes();
      query.visit([&](const Item& item) {
        if (item.isAttribute()) found.add(const_cast<iProperty*>(&propertyOf(item)));
        return true;
      });
      return !found.isEmpty();
    });
  });
}

bool CXPathParser::evaluate(const wchar_t* expression, const iNode* context, unsigned flags,
                            NodeReferenceSet& result) {
  return refill(result, [&](NodeReferenceSet& found) {
    return run("evaluate(nodes)", expression, context,
               [&](Query& query) { return selectNodes(query, flags, found); });
  });
}

bool CXPathParser::evaluate(const wchar_t* expression, const iNode* context, unsigned, WideString& result) {
  const WideString before(std::move(result));  // may be the expression's own text
  result.clear();
  return run("evaluate(string)", expression, context, [&](Query& query) {
    Item first;
    if (query.givesNodes() && !query.first(first)) return false;
    result = query.givesNodes() ? query.evaluator.textOf(first)
                                : query.evaluator.text(query.expression->root, query.context);
    return true;
  });
}

bool CXPathParser::select(const wchar_t* expression, unsigned flags, NodeReferenceSet& nodes) {
  return run("select", expression, node_, [&](Query& query) { return selectNodes(query, flags, nodes); });
}

}  // namespace tovin
