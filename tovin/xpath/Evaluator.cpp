#include "tovin/xpath/Evaluator.h"

#include <cmath>
#include <limits>

#include "tovin/values/StringValue.h"
#include "tovin/xpath/Comparison.h"
#include "tovin/xpath/DocumentOrder.h"
#include "tovin/xpath/Functions.h"
#include "tovin/xpath/XPathNumbers.h"

namespace tovin::xpath {
namespace {

// The text of a value, borrowed where it holds one.
std::wstring_view textOfValue(const Value& value, std::wstring& room) {
  if (value.getClassTag() == StringValue::Tag) {
    return static_cast<const StringValue&>(value).getString().view();
  }
  room = value.getText().view();
  return room;
}

}  // namespace

Evaluator::Evaluator(const Expression& expression, const iNode& context)
    : expression_(expression), tree_(context), axes_(tree_), names_(expression.steps.size()) {}

bool Evaluator::boolean(TermId id, const Context& context) {
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

double Evaluator::number(TermId id, const Context& context) {
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
  return textToNumber(text(id, context));
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

std::wstring Evaluator::text(TermId id, const Context& context) {
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
  for (uint32_t i = term.operands.first; i < term.operands.end(); ++i) {
    visitSomehow(expression_.operands[i].term, context, [&](const Item& item) {
      all.push_back(item);
      return true;
    });
  }
  return sorted(std::move(all));
}

NodeSet Evaluator::sorted(std::vector<Item> items) const {
  sortIntoDocumentOrder(tree_, items);
  const bool nested = items.size() > 1;
  return {std::move(items), nested};
}

void Evaluator::appendText(const Item& item, std::wstring& text) {
  std::wstring room;
  if (item.isAttribute()) {
    text += textOfValue(propertyOf(item).getValue(), room);
    return;
  }
  axes_.visit(Axis::descendantOrSelf, item, [&](const Item& each) {
    if (each.element && each.element->hasProperties()) text += textOfValue(each.element->getValue(), room);
    return true;
  });
}

std::wstring Evaluator::textOf(const Item& item) {
  std::wstring text;
  appendText(item, text);
  return text;
}

std::wstring_view Evaluator::viewText(const iProperty& property, std::wstring& room) {
  return textOfValue(property.getValue(), room);
}

std::wstring_view Evaluator::viewText(const Item& item, std::wstring& room) {
  if (item.isAttribute()) return viewText(propertyOf(item), room);
  if (item.isElement() && item.element->getChildren().empty()) {
    if (!item.element->hasProperties()) return {};
    return textOfValue(item.element->getValue(), room);
  }
  room.clear();
  appendText(item, room);
  return room;
}

}  // namespace tovin::xpath
