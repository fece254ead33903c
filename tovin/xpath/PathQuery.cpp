#include "tovin/xpath/PathQuery.h"

#include "tovin/xpath/Evaluator.h"
#include "tovin/xpath/ExpressionCache.h"
#include "tovinCore/Guard.h"

namespace tovin {

namespace {

constexpr const char* className = "PathQuery";

std::shared_ptr<const xpath::Expression> compiled(const wchar_t* expression) {
  if (!expression) throw Exception(L"A query needs an expression");
  return xpath::ExpressionCache::shared().get(expression);
}

}  // namespace

struct PathQuery::State {
  State(const wchar_t* text, const iNode& tree)
      : expression(compiled(text)),
        evaluator(*expression, tree),
        attributeStep(evaluator.plainAttributeStep(expression->root)) {}

  xpath::TermId root() const noexcept { return expression->root; }
  void requireNodes() const {
    if (expression->terms[root()].type != xpath::Type::nodes)
      xpath::Lexer(expression->source).fail(L"nodes are asked for, and this is no node set,");
  }

  std::shared_ptr<const xpath::Expression> expression;
  xpath::Evaluator evaluator;
  // What most columns of tables are: an attribute of the row, found without a walk.
  uint32_t attributeStep;
};

PathQuery::PathQuery(const wchar_t* expression, const iNode& tree)
    : state_(guarded({className, "PathQuery"}, [&] { return std::make_unique<State>(expression, tree); })) {}

PathQuery::PathQuery(PathQuery&& other) noexcept = default;
PathQuery::~PathQuery() = default;

PathQuery::Kind PathQuery::kind() const noexcept {
  switch (state_->expression->terms[state_->root()].type) {
    case xpath::Type::nodes:
      return Kind::nodes;
    case xpath::Type::boolean:
      return Kind::boolean;
    case xpath::Type::number:
      return Kind::number;
    case xpath::Type::text:
      break;
  }
  return Kind::text;
}

bool PathQuery::boolean(const iNode& context) {
  return guarded({className, "boolean"},
                 [&] { return state_->evaluator.boolean(state_->root(), {{&context}}); });
}

double PathQuery::number(const iNode& context) {
  return guarded({className, "number"},
                 [&] { return state_->evaluator.number(state_->root(), {{&context}}); });
}

std::wstring PathQuery::text(const iNode& context) {
  return guarded({className, "text"}, [&] { return state_->evaluator.text(state_->root(), {{&context}}); });
}

void PathQuery::visit(const iNode& context, const Visit& visit) {
  guarded({className, "visit"}, [&] {
    state_->requireNodes();
    state_->evaluator.visitNodes(state_->root(), {{&context}}, [&](const xpath::Item& item) {
      return item.isRoot() || visit(*item.element, item.attribute);
    });
  });
}

const iNode* PathQuery::first(const iNode& context, uint32_t& attribute) {
  return guarded({className, "first"}, [&] {
    const iNode* found = nullptr;
    if (state_->attributeStep != xpath::Evaluator::noStep) {
      state_->evaluator.visitViews(state_->attributeStep, {&context},
                                   [&](const AttributeView&, uint32_t index) {
                                     found = &context;
                                     attribute = index;
                                     return false;
                                   });
      return found;
    }
    visit(context, [&](const iNode& node, uint32_t index) {
      found = &node;
      attribute = index;
      return false;
    });
    return found;
  });
}

}  // namespace tovin
