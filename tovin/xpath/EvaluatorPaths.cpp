// Paths: stages one after the other, steps, predicates.
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "tovin/xpath/DownwardWalk.h"
#include "tovin/xpath/Evaluator.h"
#include "tovin/xpath/Sufficient.h"

namespace tovin::xpath {
namespace {

bool isReverse(Axis axis) {
  switch (axis) {
    case Axis::ancestor:
    case Axis::ancestorOrSelf:
    case Axis::preceding:
    case Axis::precedingSibling:
      return true;
    default:
      return false;
  }
}

bool choosesOne(const Predicate& predicate) {
  return predicate.kind == Predicate::Kind::index || predicate.kind == Predicate::Kind::last;
}

auto into(std::vector<Item>& items) {
  return [&items](const Item& item) {
    items.push_back(item);
    return true;
  };
}

bool visitAll(const std::vector<Item>& items, Visit visit) { return std::ranges::all_of(items, visit); }

// Takes elements and the root once each, however often they come. An attribute comes from itself only.
class Collector {
 public:
  explicit Collector(std::vector<Item>& items) : items_(items) {}

  bool operator()(const Item& item) {
    if (item.isAttribute() || !isKnown(item)) items_.push_back(item);
    return true;
  }

 private:
  bool isKnown(const Item& item) {
    if (item.isRoot()) return std::exchange(rootKnown_, true);
    return std::exchange(known_.at(item.element), 0) != NodeTable::none;
  }

  std::vector<Item>& items_;
  NodeTable known_;
  bool rootKnown_ = false;
};

}  // namespace

bool Evaluator::visitNodes(TermId id, const Context& context, Visit visit, bool ordered) {
  const Term& term = expression_.terms[id];
  if (isFixed(id)) {
    return std::ranges::all_of(fixedNodes(id, context).items, [&](const Item& item) {
      allowance().spend();
      return visit(item);
    });
  }
  if (term.kind == TermKind::path) return visitPath(expression_.paths[term.index], context, visit, ordered);
  return visitAll(nodes(id, context).items, visit);
}

// What is the same for every context of a predicate is found once.
const NodeSet& Evaluator::fixedNodes(TermId id, const Context& context) {
  Fixed& fixed = fixedOf(id);
  if (!fixed.nodes) fixed.nodes = nodes(id, context);
  return *fixed.nodes;
}

NodeSet Evaluator::startOf(const Path& path, const Context& context) {
  if (path.start == Path::Start::context) return {{context.item}, false};
  if (path.start == Path::Start::root) return {{Item()}, false};
  NodeSet base = nodes(path.base, context);
  filter(path.basePredicates, base.items);
  return base;
}

NodeSet Evaluator::pathNodes(const Path& path, const Context& context) {
  NodeSet current = startOf(path, context);
  for (uint32_t i = path.stages.first; i < path.stages.end(); ++i) {
    current = collectStage(expression_.stages[i], current);
  }
  return current;
}

bool Evaluator::visitPath(const Path& path, const Context& context, Visit visit, bool ordered) {
  NodeSet current = startOf(path, context);
  if (path.stages.count == 0) return visitAll(current.items, visit);
  const uint32_t last = path.stages.end() - 1;
  for (uint32_t i = path.stages.first; i < last; ++i) {
    current = collectStage(expression_.stages[i], current);
  }
  return takeStage(expression_.stages[last], current, visit, ordered);
}

// Hands on what can be had without collecting it first.
bool Evaluator::takeStage(const Stage& stage, const NodeSet& from, Visit visit, bool ordered) {
  const uint32_t step = stage.steps.first;
  const bool single = from.items.size() == 1;
  if (single && stage.steps.count == 1 && !(stage.downward && stage.descendants) &&
      (!ordered || !isReverse(expression_.steps[step].axis))) {
    return visitStep(step, from.items[0], visit);
  }
  if (stage.downward && (single || !from.nested)) return DownwardWalk(*this, stage, from).run(visit);
  return visitAll(collectStage(stage, from).items, visit);
}

NodeSet Evaluator::collectStage(const Stage& stage, const NodeSet& from) {
  if (from.items.empty()) return {};
  if (!stage.downward) return stepFromMany(stage.steps.first, from);
  if (!from.nested) {
    NodeSet found;
    DownwardWalk walk(*this, stage, from);
    walk.run(into(found.items));
    found.nested = walk.foundNested();
    return found;
  }
  return stage.descendants ? walkNested(stage, from) : walkFromEach(stage, from);
}

// Without a // the walks from nested contexts do not overlap, but their results are out of order.
NodeSet Evaluator::walkFromEach(const Stage& stage, const NodeSet& from) {
  std::vector<Item> found;
  for (const Item& item : from.items) {
    const NodeSet single{{item}, false};
    DownwardWalk(*this, stage, single).run(into(found));
  }
  // Attributes of items in document order are in it.
  if (stage.steps.count == 1 && stage.attributes) return {std::move(found), false};
  return sorted(std::move(found));
}

// One walk meets all elements on its way. From an attribute no step leads down, but one may lead to itself.
NodeSet Evaluator::walkNested(const Stage& stage, const NodeSet& from) {
  NodeSet elements, attributes, found;
  elements.nested = true;
  for (const Item& item : from.items) (item.isAttribute() ? attributes : elements).items.push_back(item);
  DownwardWalk walk(*this, stage, elements);
  walk.run(into(found.items));
  const size_t ordered = found.items.size();
  DownwardWalk(*this, stage, attributes).run(into(found.items));
  if (found.items.size() > ordered) return sorted(std::move(found.items));
  found.nested = walk.foundNested();
  return found;
}

NodeSet Evaluator::stepFromMany(uint32_t step, const NodeSet& from) {
  const Step& taken = expression_.steps[step];
  std::vector<Item> found;
  if (from.items.size() == 1) {
    visitStep(step, from.items[0], into(found));
    if (isReverse(taken.axis)) std::ranges::reverse(found);
    return {std::move(found), true};
  }
  if (taken.positional) {
    Collector collect(found);
    for (const Item& item : from.items) visitStep(step, item, collect);
  } else if (taken.axis == Axis::ancestor || taken.axis == Axis::ancestorOrSelf) {
    collectAncestors(step, from, found);
  } else {
    for (const Item& item : sufficient(taken.axis, from.items)) visitStep(step, item, into(found));
  }
  if (taken.axis == Axis::self) return {std::move(found), from.nested};
  return sorted(std::move(found));
}

// Goes up from each item only as far as nobody went before.
void Evaluator::collectAncestors(uint32_t step, const NodeSet& from, std::vector<Item>& found) {
  const bool withSelf = expression_.steps[step].axis == Axis::ancestorOrSelf;
  NodeTable met;
  bool metRoot = false;
  const auto take = [&](const Item& item) {
    if (accepts(step, item)) found.push_back(item);
  };
  for (const Item& item : from.items) {
    if (withSelf && item.isAttribute()) take(item);
    if (item.isRoot() && !withSelf) continue;
    const iNode* at = item.isElement() && !withSelf ? item.element->findParent() : item.element;
    for (; at; at = at->findParent()) {
      uint32_t& number = met.at(at);
      if (number != NodeTable::none) break;
      number = 0;
      allowance().spend();
      take({at});
    }
    if (!at && !std::exchange(metRoot, true)) take({});
  }
}

bool Evaluator::visitStep(uint32_t index, const Item& from, Visit visit) {
  const Step& step = expression_.steps[index];
  if (step.predicates.count == 0) return visitTested(index, from, visit);
  if (!step.positional) {
    return visitTested(index, from,
                       [&](const Item& item) { return !passes(step.predicates, item) || visit(item); });
  }
  const Predicate& first = expression_.predicates[step.predicates.first];
  std::vector<Item> chosen;
  if (step.axis != Axis::child || !choosesOne(first)) {
    chosen = candidates(index, from, first);
    filter(step.predicates, chosen);
    return visitAll(chosen, visit);
  }
  const iNode* child = chooseChild(index, from, first);
  if (!child || step.predicates.count == 1) return !child || visit({child});
  chosen.push_back({child});
  filter({step.predicates.first + 1, step.predicates.count - 1}, chosen);
  return visitAll(chosen, visit);
}

bool Evaluator::visitTested(uint32_t index, const Item& from, Visit visit) {
  const Step& step = expression_.steps[index];
  if (step.axis == Axis::attribute) return visitAttributes(index, from, visit);
  return axes_.visit(step.axis, from, [&](const Item& item) { return !matches(index, item) || visit(item); });
}

bool Evaluator::visitAttributes(uint32_t step, const Item& from, Visit visit) {
  return visitViews(step, from, [&](const AttributeView&, uint32_t index) {
    return visit({from.element, index});
  });
}

// The value of a node is no attribute of it, but can be asked for by its name, as every property can.
bool Evaluator::visitViews(uint32_t index, const Item& from, VisitView visit) {
  const Step& step = expression_.steps[index];
  if (!from.isElement() || step.test.kind == NodeTest::Kind::nothing) return true;
  const bool byName = step.test.kind == NodeTest::Kind::name;
  for (uint32_t i = 0, count = from.element->attributeCount(); i < count; ++i) {
    const AttributeView view = from.element->viewAttribute(i);
    allowance().spend();
    if (!names_[index].matches(step.test, view.name)) continue;
    if (!byName && view.isNodeValue()) continue;
    if (!visit(view, i)) return false;
  }
  return true;
}

uint32_t Evaluator::plainAttributeStep(TermId id) const {
  const Term& term = expression_.terms[id];
  if (term.kind != TermKind::path) return noStep;
  const Path& path = expression_.paths[term.index];
  if (path.start != Path::Start::context || path.stages.count != 1) return noStep;
  const Stage& stage = expression_.stages[path.stages.first];
  if (!stage.attributes || stage.steps.count != 1) return noStep;
  return expression_.steps[stage.steps.first].predicates.count == 0 ? stage.steps.first : noStep;
}

bool Evaluator::passes(Range predicates, const Item& item) {
  for (uint32_t i = predicates.first; i < predicates.end(); ++i) {
    if (!holds(i, item)) return false;
  }
  return true;
}

bool Evaluator::holds(uint32_t index, const Item& item) {
  const Predicate& predicate = expression_.predicates[index];
  if (predicate.remembered && item.isElement()) return remember(index, item);
  return boolean(predicate.term, {item, 1, 1});
}

bool Evaluator::remember(uint32_t index, const Item& item) {
  remembered_.resize(expression_.predicates.size());
  uint32_t number = remembered_[index].find(item.element);
  if (number == NodeTable::none) {
    number = boolean(expression_.predicates[index].term, {item, 1, 1});
    remembered_[index].at(item.element) = number;
  }
  return number != 0;
}

// All that the step's test takes, or only as many as its first predicate can choose from.
std::vector<Item> Evaluator::candidates(uint32_t step, const Item& from, const Predicate& first) {
  std::vector<Item> items;
  const double wanted =
      first.kind == Predicate::Kind::index ? first.index : std::numeric_limits<double>::infinity();
  visitTested(step, from, [&](const Item& item) {
    items.push_back(item);
    return static_cast<double>(items.size()) < wanted;
  });
  return items;
}

// The child that [k] or [last()] means, without looking any further; null if there is none.
const iNode* Evaluator::chooseChild(uint32_t step, const Item& from, const Predicate& predicate) {
  if (from.isAttribute()) return nullptr;
  const Children children = tree_.childrenOf(from.element);
  const bool last = predicate.kind == Predicate::Kind::last;
  const double wanted = last ? 1 : predicate.index;
  double position = 0;
  for (size_t i = 0; i < children.size(); ++i) {
    const iNode* child = children[last ? children.size() - 1 - i : i];
    allowance().spend();
    if (matches(step, {child}) && ++position >= wanted) return position == wanted ? child : nullptr;
  }
  return nullptr;
}

void Evaluator::filter(Range predicates, std::vector<Item>& items) {
  for (uint32_t i = predicates.first; i < predicates.end() && !items.empty(); ++i) {
    const Predicate& predicate = expression_.predicates[i];
    if (predicate.kind == Predicate::Kind::condition)
      std::erase_if(items, [&](const Item& item) { return !holds(i, item); });
    else
      filterByPosition(predicate, items);
  }
}

void Evaluator::filterByPosition(const Predicate& predicate, std::vector<Item>& items) {
  const auto size = static_cast<double>(items.size());
  if (predicate.kind != Predicate::Kind::positional) {
    const double wanted = predicate.kind == Predicate::Kind::last ? size : predicate.index;
    if (!(wanted >= 1 && wanted <= size && std::floor(wanted) == wanted)) return items.clear();
    const Item chosen = items[static_cast<size_t>(wanted) - 1];
    items.assign(1, chosen);
    return;
  }
  const bool isNumber = expression_.terms[predicate.term].type == Type::number;
  double position = 0;
  std::erase_if(items, [&](const Item& item) {
    const Context context{item, ++position, size};
    return isNumber ? number(predicate.term, context) != context.position : !boolean(predicate.term, context);
  });
}

}  // namespace tovin::xpath
