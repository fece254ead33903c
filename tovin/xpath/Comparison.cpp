#include "tovin/xpath/Comparison.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "tovin/xpath/SetSummary.h"

namespace tovin::xpath {
namespace {

bool compareNumbers(double left, Token operation, double right) {
  switch (operation) {
    case Token::equal:
      return left == right;
    case Token::notEqual:
      return left != right;
    case Token::less:
      return left < right;
    case Token::lessOrEqual:
      return left <= right;
    case Token::greater:
      return left > right;
    default:
      return left >= right;
  }
}

bool isEquality(Token operation) { return operation == Token::equal || operation == Token::notEqual; }

// The operator that says the same with its sides exchanged.
Token mirrored(Token operation) {
  switch (operation) {
    case Token::less:
      return Token::greater;
    case Token::lessOrEqual:
      return Token::greaterOrEqual;
    case Token::greater:
      return Token::less;
    case Token::greaterOrEqual:
      return Token::lessOrEqual;
    default:
      return operation;
  }
}

// The operator is met by something that is less than others, rather than greater.
bool isRising(Token operation) { return operation == Token::less || operation == Token::lessOrEqual; }

// Calls meets(node) for each node until it is true; a node is what the evaluator has texts and numbers of.
template <class Meets>
bool anyNode(Evaluator& evaluator, TermId nodes, const Context& context, Meets&& meets) {
  const uint32_t attributes = evaluator.plainAttributeStep(nodes);
  if (attributes != Evaluator::noStep) {
    return !evaluator.visitViews(attributes, context.item,
                                 [&](const AttributeView& view, uint32_t) { return !meets(view); });
  }
  return !evaluator.visitSomehow(nodes, context, [&](const Item& item) { return !meets(item); });
}

template <class Meets>
bool anyText(Evaluator& evaluator, TermId nodes, const Context& context, Meets&& meets) {
  std::wstring room;
  return anyNode(evaluator, nodes, context,
                 [&](const auto& node) { return meets(evaluator.viewText(node, room)); });
}

template <class Meets>
bool anyNumber(Evaluator& evaluator, TermId nodes, const Context& context, Meets&& meets) {
  std::wstring room;
  return anyNode(evaluator, nodes, context,
                 [&](const auto& node) { return meets(evaluator.numberOf(node, room)); });
}

void sumUpTexts(Evaluator& evaluator, TermId nodes, const Context& context, SetSummary& summary) {
  anyText(evaluator, nodes, context, [&](std::wstring_view text) {
    summary.texts.emplace(text);
    return false;
  });
}

// Two that differ are enough.
void sumUpDifference(Evaluator& evaluator, TermId nodes, const Context& context, SetSummary& summary) {
  anyText(evaluator, nodes, context, [&](std::wstring_view text) {
    if (!summary.first) summary.first = text;
    return summary.several = !equalTexts(*summary.first, text);
  });
}

void sumUpNumbers(Evaluator& evaluator, TermId nodes, const Context& context, SetSummary& summary) {
  anyNumber(evaluator, nodes, context, [&](double number) {
    if (std::isnan(number)) return false;
    summary.anyNumber = true;
    summary.least = std::min(summary.least, number);
    summary.most = std::max(summary.most, number);
    return false;
  });
}

// What a set is compared by under an operation; of a fixed one it is found once.
const SetSummary& summaryOf(Evaluator& evaluator, TermId nodes, Token operation, const Context& context,
                            std::unique_ptr<SetSummary>& room) {
  std::unique_ptr<SetSummary>& place = evaluator.isFixed(nodes) ? evaluator.summaryOf(nodes) : room;
  if (place) return *place;
  auto summary = std::make_unique<SetSummary>();
  if (operation == Token::equal)
    sumUpTexts(evaluator, nodes, context, *summary);
  else if (operation == Token::notEqual)
    sumUpDifference(evaluator, nodes, context, *summary);
  else
    sumUpNumbers(evaluator, nodes, context, *summary);
  place = std::move(summary);
  return *place;
}

bool meetsText(std::wstring_view text, Token operation, const SetSummary& others) {
  if (operation == Token::equal) return others.texts.contains(text);
  return others.first && (others.several || !equalTexts(*others.first, text));
}

bool meetsNumber(double number, Token operation, const SetSummary& others) {
  return others.anyNumber &&
         compareNumbers(number, operation, isRising(operation) ? others.most : others.least);
}

// Whether the left side is the one to be summed up: what is the same each time, or a few attributes.
bool isSummedUpFirst(const Evaluator& evaluator, TermId left, TermId right) {
  if (evaluator.isFixed(left) || evaluator.isFixed(right)) return !evaluator.isFixed(right);
  return evaluator.plainAttributeStep(left) != Evaluator::noStep;
}

bool compareSets(Evaluator& evaluator, TermId left, Token operation, TermId right, const Context& context) {
  if (isSummedUpFirst(evaluator, left, right)) {
    std::swap(left, right);
    operation = mirrored(operation);
  }
  std::unique_ptr<SetSummary> room;
  const SetSummary& others = summaryOf(evaluator, right, operation, context, room);
  if (others.isEmpty()) return false;
  if (isEquality(operation)) {
    return anyText(evaluator, left, context,
                   [&](std::wstring_view text) { return meetsText(text, operation, others); });
  }
  return anyNumber(evaluator, left, context,
                   [&](double number) { return meetsNumber(number, operation, others); });
}

bool isText(Evaluator& evaluator, const Item& item, std::wstring_view wanted, std::wstring& room) {
  return equalTexts(evaluator.viewText(item, room), wanted);
}

// A narrow text is compared where it lies.
bool isText(Evaluator& evaluator, const AttributeView& view, std::wstring_view wanted, std::wstring& room) {
  if (view.kind != AttributeView::Kind::text || view.unit != 1)
    return equalTexts(evaluator.viewText(view, room), wanted);
  return std::ranges::equal(view.narrow(), wanted, [](char unit, wchar_t other) {
    return static_cast<wchar_t>(static_cast<unsigned char>(unit)) == other;
  });
}

bool compareSetWithText(Evaluator& evaluator, TermId set, Token operation, TermId other,
                        const Context& context) {
  std::wstring made;
  const std::wstring_view wanted = evaluator.viewText(other, context, made);
  if (evaluator.isFixed(set)) {
    std::unique_ptr<SetSummary> room;
    return meetsText(wanted, operation, summaryOf(evaluator, set, operation, context, room));
  }
  const bool equality = operation == Token::equal;
  std::wstring room;
  return anyNode(evaluator, set, context,
                 [&](const auto& node) { return isText(evaluator, node, wanted, room) == equality; });
}

bool compareSetWithNumber(Evaluator& evaluator, TermId set, Token operation, double wanted,
                          const Context& context) {
  if (evaluator.isFixed(set) && !isEquality(operation)) {
    std::unique_ptr<SetSummary> room;
    const Token seenFromOther = mirrored(operation);
    return meetsNumber(wanted, seenFromOther, summaryOf(evaluator, set, seenFromOther, context, room));
  }
  return anyNumber(evaluator, set, context,
                   [&](double number) { return compareNumbers(number, operation, wanted); });
}

bool compareSet(Evaluator& evaluator, TermId set, Token operation, TermId other, const Context& context) {
  const Type type = evaluator.expression().terms[other].type;
  if (type == Type::boolean) {
    return compareNumbers(evaluator.boolean(set, context), operation, evaluator.boolean(other, context));
  }
  if (type == Type::text && isEquality(operation))
    return compareSetWithText(evaluator, set, operation, other, context);
  return compareSetWithNumber(evaluator, set, operation, evaluator.number(other, context), context);
}

}  // namespace

bool compareTerms(Evaluator& evaluator, TermId left, Token operation, TermId right, const Context& context) {
  const Type leftType = evaluator.expression().terms[left].type;
  const Type rightType = evaluator.expression().terms[right].type;
  if (leftType == Type::nodes && rightType == Type::nodes)
    return compareSets(evaluator, left, operation, right, context);
  if (leftType == Type::nodes) return compareSet(evaluator, left, operation, right, context);
  if (rightType == Type::nodes) return compareSet(evaluator, right, mirrored(operation), left, context);
  if (isEquality(operation)) {
    const bool wanted = operation == Token::equal;
    if (leftType == Type::boolean || rightType == Type::boolean)
      return (evaluator.boolean(left, context) == evaluator.boolean(right, context)) == wanted;
    if (leftType == Type::text && rightType == Type::text) {
      std::wstring room, other;
      return equalTexts(evaluator.viewText(left, context, room), evaluator.viewText(right, context, other)) ==
             wanted;
    }
  }
  return compareNumbers(evaluator.number(left, context), operation, evaluator.number(right, context));
}

}  // namespace tovin::xpath
