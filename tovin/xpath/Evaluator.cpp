#include "tovin/xpath/Evaluator.h"

#include <cmath>
#include <limits>

#include "tovin/values/DoubleValue.h"
#include "tovin/values/StringValue.h"
#include "tovin/xpath/Comparison.h"
#include "tovin/xpath/Functions.h"
#include "tovin/xpath/XPathNumbers.h"
#include "tovinCore/Numbers.h"

namespace tovin::xpath {
namespace {

double doubleOf(const Value& value) { return static_cast<const DoubleValue&>(value).getDouble(); }

// The text of a value, borrowed where it holds one.
std::wstring_view textOfValue(const Value& value, std::wstring& room) {
  const ClassTag& tag = value.getClassTag();
  if (tag == StringValue::Tag) return static_cast<const StringValue&>(value).getString().view();
  room = tag == DoubleValue::Tag ? numberToText(doubleOf(value)) : std::wstring(value.getText().view());
  return room;
}

// One whose text is its own value's alone.
bool isLeaf(const Item& item) { return item.isElement() && item.element->getChildren().empty(); }

double numberOfValue(const Value& value, std::wstring& room) {
  if (value.getClassTag() == DoubleValue::Tag) return doubleOf(value);
  return textToNumber(textOfValue(value, room));
}

std::wstring_view widened(const AttributeView& text, std::wstring& room) {
  room.resize(text.length);
  text.copyTo(room.data());
  return room;
}

}  // namespace

Evaluator::Evaluator(const Expression& expression, const iNode& context)
    : expression_(expression),
      tree_(context),
      axes_(tree_),
      order_(tree_, axes_),
      names_(expression.steps.size()) {}

Evaluator::Fixed& Evaluator::fixedOf(TermId id) {
  fixed_.resize(expression_.terms.size());
  if (!fixed_[id]) fixed_[id] = std::make_unique<Fixed>();
  return *fixed_[id];
}

bool Evaluator::boolean(TermId id, const Context& context) {
  if (!isKept(id)) return findBoolean(id, context);
  Fixed& fixed = fixedOf(id);
  if (!fixed.boolean) fixed.boolean = findBoolean(id, context);
  return *fixed.boolean;
}

double Evaluator::number(TermId id, const Context& context) {
  if (!isKept(id)) return findNumber(id, context);
  Fixed& fixed = fixedOf(id);
  if (!fixed.number) fixed.number = findNumber(id, context);
  return *fixed.number;
}

std::wstring Evaluator::text(TermId id, const Context& context) {
  std::wstring room;
  return isKept(id) ? std::wstring(viewText(id, context, room)) : findText(id, context);
}

std::wstring_view Evaluator::findText(TermId id, const Context& context, std::wstring& room) {
  if (isKept(id)) {
    Fixed& fixed = fixedOf(id);
    if (!fixed.text) fixed.text = findText(id, context);
    return *fixed.text;
  }
  if (expression_.terms[id].type == Type::nodes) {
    Item first;
    return firstNode(id, context, first) ? viewText(first, room) : std::wstring_view();
  }
  room = findText(id, context);
  return room;
}

bool Evaluator::findBoolean(TermId id, const Context& context) {
  const Term& term = expression_.terms[id];
  const auto& operands = expression_.operands;
  switch (term.kind) {
    case TermKind::disjunction:
    case TermKind::conjunction: {
      const bool decisive = term.kind == TermKind::disjunction;
      for (uint32_t i = term.operands.first; i < term.operands.end(); ++i) {
        if (boolean(operands[i].term, context) == decisive) return decisive;
      }
      return !decisive;
    }
    case TermKind::comparison:
      return compareTerms(*this, operands[term.operands.first].term,
                          operands[term.operands.first + 1].operation, operands[term.operands.first + 1].term,
                          context);
    default:
      break;
  }
  switch (term.type) {
    case Type::boolean:
      return term.function->boolean(*this, term.operands, context);
    case Type::number: {
      const double value = number(id, context);
      return value != 0 && !std::isnan(value);
    }
    case Type::text:
      return term.kind == TermKind::literal ? !expression_.literals[term.index].empty()
                                            : !text(id, context).empty();
    case Type::nodes:
      return !visitSomehow(id, context, [](const Item&) { return false; });
  }
  return false;
}

double Evaluator::findNumber(TermId id, const Context& context) {
  const Term& term = expression_.terms[id];
  switch (term.kind) {
    case TermKind::number:
      return term.number;
    case TermKind::sum:
      return sum(term, context);
    case TermKind::product:
      return product(term, context);
    case TermKind::negation: {
      const Operand& operand = expression_.operands[term.operands.first];
      const double value = number(operand.term, context);
      return operand.operation == Token::minus ? -value : value;
    }
    default:
      break;
  }
  if (term.type == Type::number) return term.function->number(*this, term.operands, context);
  if (term.type == Type::boolean) return boolean(id, context) ? 1 : 0;
  std::wstring room;
  if (term.type == Type::text) return textToNumber(viewText(id, context, room));
  Item first;
  return firstNode(id, context, first) ? numberOf(first, room) : std::numeric_limits<double>::quiet_NaN();
}

double Evaluator::sum(const Term& term, const Context& context) {
  double total = 0;
  for (uint32_t i = term.operands.first; i < term.operands.end(); ++i) {
    const Operand& operand = expression_.operands[i];
    const double value = number(operand.term, context);
    if (i == term.operands.first)
      total = value;
    else
      total += operand.operation == Token::minus ? -value : value;
  }
  return total;
}

double Evaluator::product(const Term& term, const Context& context) {
  double result = 0;
  for (uint32_t i = term.operands.first; i < term.operands.end(); ++i) {
    const Operand& operand = expression_.operands[i];
    const double value = number(operand.term, context);
    switch (operand.operation) {
      case Token::multiply:
        result *= value;
        break;
      case Token::div:
        result /= value;
        break;
      case Token::mod:
        result = std::fmod(result, value);
        break;
      default:
        result = value;
    }
  }
  return result;
}

std::wstring Evaluator::findText(TermId id, const Context& context) {
  const Term& term = expression_.terms[id];
  switch (term.type) {
    case Type::nodes: {
      Item first;
      return firstNode(id, context, first) ? textOf(first) : std::wstring();
    }
    case Type::boolean:
      return boolean(id, context) ? L"true" : L"false";
    case Type::number:
      return numberToText(number(id, context));
    case Type::text:
      break;
  }
  if (term.kind == TermKind::literal) return expression_.literals[term.index];
  return term.function->text(*this, term.operands, context);
}

bool Evaluator::firstNode(TermId id, const Context& context, Item& first) {
  return !visitNodes(id, context, [&](const Item& item) {
    first = item;
    return false;
  });
}

NodeSet Evaluator::nodes(TermId id, const Context& context) {
  const Term& term = expression_.terms[id];
  if (term.kind == TermKind::unite) return unite(term, context);
  if (term.kind == TermKind::path) return pathNodes(expression_.paths[term.index], context);
  return {};  // id(): no attribute is known to be an identifier
}

NodeSet Evaluator::unite(const Term& term, const Context& context) {
  std::vector<Item> all;
  size_t distinct = 0;
  for (uint32_t i = term.operands.first; i < term.operands.end(); ++i) {
    // One operand gives nothing twice; what several give takes no more room than twice what differs.
    if (all.size() >= 2 * distinct) {
      if (distinct > 0) order_.sort(all);
      distinct = all.size();
    }
    visitSomehow(expression_.operands[i].term, context, [&](const Item& item) {
      all.push_back(item);
      return true;
    });
  }
  return sorted(std::move(all));
}

NodeSet Evaluator::sorted(std::vector<Item> items) {
  order_.sort(items);
  const bool nested = items.size() > 1;
  return {std::move(items), nested};
}

void Evaluator::appendText(const Item& item, std::wstring& text) {
  std::wstring room;
  if (item.isAttribute()) {
    text += viewText(viewOf(item), room);
    return;
  }
  axes_.visit(Axis::descendantOrSelf, item, [&](const Item& each) {
    if (each.element && each.element->hasProperties()) text += viewText(each.element->viewValue(), room);
    return true;
  });
}

std::wstring Evaluator::textOf(const Item& item) {
  std::wstring text;
  appendText(item, text);
  return text;
}

std::wstring_view Evaluator::viewText(const AttributeView& view, std::wstring& room) {
  switch (view.kind) {
    case AttributeView::Kind::text:
      return widened(view, room);
    case AttributeView::Kind::number:
      return room = numberToText(view.number);
    case AttributeView::Kind::integer:
      return room = util::integerToString(view.integer);
    case AttributeView::Kind::nullText:
    case AttributeView::Kind::nullValue:
      return {};
    default:
      return textOfValue(view.object(), room);
  }
}

std::wstring_view Evaluator::viewText(const Item& item, std::wstring& room) {
  if (item.isAttribute()) return viewText(viewOf(item), room);
  if (isLeaf(item)) {
    if (!item.element->hasProperties()) return {};
    return viewText(item.element->viewValue(), room);
  }
  room.clear();
  appendText(item, room);
  return room;
}

double Evaluator::numberOf(const AttributeView& view, std::wstring& room) {
  if (view.kind == AttributeView::Kind::number) return view.number;
  return view.isObject() ? numberOfValue(view.object(), room) : textToNumber(viewText(view, room));
}

double Evaluator::numberOf(const Item& item, std::wstring& room) {
  if (item.isAttribute()) return numberOf(viewOf(item), room);
  if (isLeaf(item) && item.element->hasProperties()) return numberOf(item.element->viewValue(), room);
  return textToNumber(viewText(item, room));
}

}  // namespace tovin::xpath
