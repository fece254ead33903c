// Evaluates a compiled query on a tree. A method for each type of result, because the types are known
// beforehand.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tovin/xpath/Axes.h"
#include "tovin/xpath/DocumentOrder.h"
#include "tovin/xpath/Expression.h"
#include "tovin/xpath/NodeSet.h"
#include "tovin/xpath/NodeTable.h"
#include "tovin/xpath/SetSummary.h"

namespace tovin::xpath {

/// Where a term is evaluated. Positions are counted from 1.
struct Context {
  Item item;
  double position = 1;
  double size = 1;
};

/// One evaluation. Recurses by the nesting of the query, which the parser bounds, and never by the tree.
class Evaluator {
 public:
  Evaluator(const Expression& expression, const iNode& context);

  bool boolean(TermId id, const Context& context);
  double number(TermId id, const Context& context);
  std::wstring text(TermId id, const Context& context);
  /// The same text without a copy where it stands somewhere; the room is used where it does not.
  std::wstring_view viewText(TermId id, const Context& context, std::wstring& room) {
    const Term& term = expression_.terms[id];
    if (term.kind == TermKind::literal) return expression_.literals[term.index];
    return findText(id, context, room);
  }
  /// In document order.
  NodeSet nodes(TermId id, const Context& context);
  /// The same, one by one. False when the visitor wanted no more.
  bool visitNodes(TermId id, const Context& context, Visit visit) {
    return visitNodes(id, context, visit, true);
  }
  /// In any order, as it is quickest.
  bool visitSomehow(TermId id, const Context& context, Visit visit) {
    return visitNodes(id, context, visit, false);
  }
  /// Of an argument of a function.
  TermId argument(Range arguments, uint32_t index) const {
    return expression_.operands[arguments.first + index].term;
  }
  /// The first node of a set in document order; false if it is empty.
  bool firstNode(TermId id, const Context& context, Item& first);

  /// The string-value. An attribute's: its value as text. An element's: its own value as text, then those of
  /// what is below it, in order.
  void appendText(const Item& item, std::wstring& text);
  std::wstring textOf(const Item& item);
  /// The same without a copy where it stands in one piece; the room is used where it does not.
  std::wstring_view viewText(const Item& item, std::wstring& room);
  static std::wstring_view viewText(const AttributeView& view, std::wstring& room);
  /// The string-value as a number; a value that is one is taken as it is.
  double numberOf(const Item& item, std::wstring& room);
  static double numberOf(const AttributeView& view, std::wstring& room);

  /// Whether a term of a predicate gives the same for every context.
  bool isFixed(TermId id) const {
    const Term& term = expression_.terms[id];
    return term.insidePredicate && !term.contextual && !term.positional;
  }
  /// Room for what the nodes of a fixed term are compared by; made once.
  std::unique_ptr<SetSummary>& summaryOf(TermId id) { return fixedOf(id).summary; }

  /// What one step selects from one item, in the order of its axis.
  bool visitStep(uint32_t step, const Item& from, Visit visit);
  /// The step of a term that asks the context for attributes by a test alone; noStep for any other.
  uint32_t plainAttributeStep(TermId id) const;
  static constexpr uint32_t noStep = UINT32_MAX;
  using VisitView = FunctionRef<bool(const AttributeView& view, uint32_t index)>;
  /// The attributes that an attribute step takes, whatever its predicates.
  bool visitViews(uint32_t step, const Item& from, VisitView visit);
  /// Whether the element or root passes a step's test and its predicates, which do not count.
  bool accepts(uint32_t step, const Item& item) {
    return matches(step, item) && passes(expression_.steps[step].predicates, item);
  }
  /// Its test alone.
  bool matches(uint32_t index, const Item& item) {
    const Step& step = expression_.steps[index];
    if (step.test.kind == NodeTest::Kind::node) return true;
    if (step.test.kind == NodeTest::Kind::nothing || !item.isElement()) return false;
    return names_[index].matches(step.test, item.element->getName());
  }
  const Tree& tree() const noexcept { return tree_; }
  Allowance& allowance() noexcept { return axes_.allowance(); }
  const Expression& expression() const noexcept { return expression_; }

 private:
  // What a fixed term gives, as far as it was asked for.
  struct Fixed {
    std::optional<bool> boolean;
    std::optional<double> number;
    std::optional<std::wstring> text;
    std::optional<NodeSet> nodes;
    std::unique_ptr<SetSummary> summary;
  };

  // Whether what a term gives is worth keeping.
  bool isKept(TermId id) const {
    const TermKind kind = expression_.terms[id].kind;
    return isFixed(id) && kind != TermKind::literal && kind != TermKind::number;
  }
  Fixed& fixedOf(TermId id);
  bool findBoolean(TermId id, const Context& context);
  double findNumber(TermId id, const Context& context);
  std::wstring findText(TermId id, const Context& context);
  std::wstring_view findText(TermId id, const Context& context, std::wstring& room);
  bool visitNodes(TermId id, const Context& context, Visit visit, bool ordered);
  double sum(const Term& term, const Context& context);
  double product(const Term& term, const Context& context);
  NodeSet unite(const Term& term, const Context& context);

  bool visitPath(const Path& path, const Context& context, Visit visit, bool ordered);
  NodeSet startOf(const Path& path, const Context& context);
  NodeSet pathNodes(const Path& path, const Context& context);
  const NodeSet& fixedNodes(TermId id, const Context& context);
  bool takeStage(const Stage& stage, const NodeSet& from, Visit visit, bool ordered);
  NodeSet collectStage(const Stage& stage, const NodeSet& from);
  NodeSet walkFromEach(const Stage& stage, const NodeSet& from);
  NodeSet walkNested(const Stage& stage, const NodeSet& from);
  NodeSet stepFromMany(uint32_t step, const NodeSet& from);
  void collectAncestors(uint32_t step, const NodeSet& from, std::vector<Item>& found);
  NodeSet sorted(std::vector<Item> items);

  bool visitTested(uint32_t step, const Item& from, Visit visit);
  bool visitAttributes(uint32_t step, const Item& from, Visit visit);
  const iNode* chooseChild(uint32_t step, const Item& from, const Predicate& predicate);
  bool passes(Range predicates, const Item& item);
  bool holds(uint32_t predicate, const Item& item);
  bool remember(uint32_t predicate, const Item& item);
  std::vector<Item> candidates(uint32_t step, const Item& from, const Predicate& first);
  void filter(Range predicates, std::vector<Item>& items);
  void filterByPosition(const Predicate& predicate, std::vector<Item>& items);

  const Expression& expression_;
  const Tree tree_;
  Axes axes_;
  DocumentOrder order_;
  std::vector<NameMemory> names_;              // by step
  std::vector<std::unique_ptr<Fixed>> fixed_;  // by term
  std::vector<NodeTable> remembered_;          // by predicate
};

}  // namespace tovin::xpath
