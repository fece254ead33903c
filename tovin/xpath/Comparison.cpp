#include "tovin/xpath/Comparison.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <unordered_set>

#include "tovin/xpath/Texts.h"
#include "tovin/xpath/XPathNumbers.h"

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

bool equalTexts(std::wstring_view left, std::wstring_view right) {
  return left == right || compareUnits(left, right) == 0;
}

// Calls meets(text) for the string-value of each node until it is true.
template <class Meets>
bool anyText(Evaluator& evaluator, TermId nodes, const Context& context, Meets&& meets) {
  std::wstring room;
  const uint32_t attributes = evaluator.plainAttributeStep(nodes);
  if (attributes != Evaluator::noStep) {
    return !evaluator.visitProperties(attributes, context.item, [&](const iProperty& property, uint32_t) {
      return !meets(Evaluator::viewText(property, room));
    });
  }
  return !evaluator.visitSomehow(nodes, context,
                                 [&](const Item& item) { return !meets(evaluator.viewText(item, room)); });
}

bool shareText(Evaluator& evaluator, TermId left, TermId right, const Context& context) {
  std::unordered_set<std::wstring> texts;
  anyText(evaluator, left, context, [&](std::wstring_view text) {
    texts.insert(inUnits(text));
    return false;
  });
  if (texts.empty()) return false;
  return anyText(evaluator, right, context,
                 [&](std::wstring_view text) { return texts.contains(inUnits(text)); });
}

// Some pair differs, unless all texts of both sides are one.
bool differInText(Evaluator& evaluator, TermId left, TermId right, const Context& context) {
  std::optional<std::wstring> first;
  bool several = false;
  anyText(evaluator, left, context, [&](std::wstring_view text) {
    if (!first) first = text;
    return several = !equalTexts(*first, text);
  });
  if (!first) return false;
  return anyText(evaluator, right, context,
                 [&](std::wstring_view text) { return several || !equalTexts(*first, text); });
}

struct Extent {
  double least = HUGE_VAL;
  double most = -HUGE_VAL;
  bool any = false;
};

// Nothing that is no number is in order with anything.
Extent extentOf(Evaluator& evaluator, TermId nodes, const Context& context) {
  Extent extent;
  anyText(evaluator, nodes, context, [&](std::wstring_view text) {
    const double number = textToNumber(text);
    if (!std::isnan(number)) {
      extent = {std::min(extent.least, number), std::max(extent.most, number), true};
    }
    return false;
  });
  return extent;
}

bool compareSets(Evaluator& evaluator, TermId left, Token operation, TermId right, const Context& context) {
  if (operation == Token::equal) return shareText(evaluator, left, right, context);
  if (operation == Token::notEqual) return differInText(evaluator, left, right, context);
  const Extent a = extentOf(evaluator, left, context), b = extentOf(evaluator, right, context);
  if (!a.any || !b.any) return false;
  const bool rising = operation == Token::less || operation == Token::lessOrEqual;
  return rising ? compareNumbers(a.least, operation, b.most) : compareNumbers(a.most, operation, b.least);
}

bool compareSetWithText(Evaluator& evaluator, TermId set, Token operation, TermId other,
                        const Context& context) {
  const Term& term = evaluator.expression().terms[other];
  const std::wstring made = term.kind == TermKind::literal ? std::wstring() : evaluator.text(other, context);
  const std::wstring& wanted =
      term.kind == TermKind::literal ? evaluator.expression().literals[term.index] : made;
  const bool equality = operation == Token::equal;
  return anyText(evaluator, set, context,
                 [&](std::wstring_view text) { return equalTexts(text, wanted) == equality; });
}

bool compareSet(Evaluator& evaluator, TermId set, Token operation, TermId other, const Context& context) {
  const Type type = evaluator.expression().terms[other].type;
  if (type == Type::boolean) {
    return compareNumbers(evaluator.boolean(set, context), operation, evaluator.boolean(other, context));
  }
  if (type == Type::text && isEquality(operation))
    return compareSetWithText(evaluator, set, operation, other, context);
  const double wanted = evaluator.number(other, context);
  return anyText(evaluator, set, context, [&](std::wstring_view text) {
    return compareNumbers(textToNumber(text), operation, wanted);
  });
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
    if (leftType == Type::text && rightType == Type::text)
      return equalTexts(evaluator.text(left, context), evaluator.text(right, context)) == wanted;
  }
  return compareNumbers(evaluator.number(left, context), operation, evaluator.number(right, context));
}

}  // namespace tovin::xpath
