#include "tovin/xpath/Functions.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "tovin/xpath/Evaluator.h"
#include "tovin/xpath/Texts.h"
#include "tovin/xpath/XPathNumbers.h"
#include "tovinCore/Units.h"

namespace tovin::xpath {
namespace {

// A text that a function works on, in units; borrowed where it stands somewhere.
class Text {
 public:
  Text(Evaluator& evaluator, Range arguments, uint32_t index, const Context& context)
      : view_(unitsOf(evaluator, evaluator.viewText(evaluator.argument(arguments, index), context, room_))) {}
  // Of the only argument, or of the context node without one.
  Text(Evaluator& evaluator, Range arguments, const Context& context)
      : view_(unitsOf(evaluator, arguments.count > 0
                                     ? evaluator.viewText(evaluator.argument(arguments, 0), context, room_)
                                     : evaluator.viewText(context.item, room_))) {}
  Text(const Text&) = delete;

  std::wstring_view view() const noexcept { return view_; }

 private:
  std::wstring_view unitsOf(Evaluator& evaluator, std::wstring_view text) {
    constexpr size_t unitsOfAVisit = 16;
    evaluator.allowance().spend(text.size() / unitsOfAVisit);
    return inUnits(text, room_);
  }

  std::wstring room_;
  std::wstring_view view_;
};

// The first node of the only argument, or the context node without one.
bool nodeOrContext(Evaluator& evaluator, Range arguments, const Context& context, Item& item) {
  item = context.item;
  return arguments.count == 0 || evaluator.firstNode(evaluator.argument(arguments, 0), context, item);
}

// Node sets

double last(Evaluator&, Range, const Context& context) { return context.size; }

double position(Evaluator&, Range, const Context& context) { return context.position; }

double count(Evaluator& evaluator, Range arguments, const Context& context) {
  double count = 0;
  evaluator.visitSomehow(evaluator.argument(arguments, 0), context, [&](const Item&) {
    ++count;
    return true;
  });
  return count;
}

std::wstring nameText(Evaluator& evaluator, Range arguments, const Context& context) {
  Item item;
  const wchar_t* name = nodeOrContext(evaluator, arguments, context, item) ? nameOf(item) : nullptr;
  return name ? name : L"";
}

std::wstring localNameText(Evaluator& evaluator, Range arguments, const Context& context) {
  Item item;
  if (!nodeOrContext(evaluator, arguments, context, item)) return {};
  return std::wstring(localName(nameOf(item)));
}

// Prefixes are part of the names here and stand for nothing.
std::wstring namespaceUri(Evaluator&, Range, const Context&) { return {}; }

// Texts

std::wstring string(Evaluator& evaluator, Range arguments, const Context& context) {
  return std::wstring(Text(evaluator, arguments, context).view());
}

std::wstring concat(Evaluator& evaluator, Range arguments, const Context& context) {
  std::wstring text;
  for (uint32_t i = 0; i < arguments.count; ++i) text += Text(evaluator, arguments, i, context).view();
  return text;
}

bool startsWith(Evaluator& evaluator, Range arguments, const Context& context) {
  const Text text(evaluator, arguments, 0, context), mark(evaluator, arguments, 1, context);
  return text.view().starts_with(mark.view());
}

bool contains(Evaluator& evaluator, Range arguments, const Context& context) {
  const Text text(evaluator, arguments, 0, context), mark(evaluator, arguments, 1, context);
  return findText(text.view(), mark.view()) != std::wstring_view::npos;
}

std::wstring substringBefore(Evaluator& evaluator, Range arguments, const Context& context) {
  const Text text(evaluator, arguments, 0, context), mark(evaluator, arguments, 1, context);
  const size_t found = findText(text.view(), mark.view());
  return found == std::wstring_view::npos ? std::wstring() : std::wstring(text.view().substr(0, found));
}

std::wstring substringAfter(Evaluator& evaluator, Range arguments, const Context& context) {
  const Text text(evaluator, arguments, 0, context), mark(evaluator, arguments, 1, context);
  const size_t found = findText(text.view(), mark.view());
  if (found == std::wstring_view::npos) return {};
  return std::wstring(text.view().substr(found + mark.view().size()));
}

// The characters at positions p with round(from) <= p < round(from) + round(length), counted from 1.
std::wstring substring(Evaluator& evaluator, Range arguments, const Context& context) {
  const Text text(evaluator, arguments, 0, context);
  const double from = roundHalfUp(evaluator.number(evaluator.argument(arguments, 1), context));
  double to = HUGE_VAL;
  if (arguments.count > 2)
    to = from + roundHalfUp(evaluator.number(evaluator.argument(arguments, 2), context));
  const auto size = static_cast<double>(text.view().size());
  const double begin = std::max(from, 1.0);
  const double end = std::min(to, size + 1);
  // Written so that NaN on either side selects nothing.
  if (std::isnan(from) || std::isnan(to) || !(begin < end)) return {};
  return std::wstring(text.view().substr(static_cast<size_t>(begin) - 1, static_cast<size_t>(end - begin)));
}

double stringLength(Evaluator& evaluator, Range arguments, const Context& context) {
  return static_cast<double>(Text(evaluator, arguments, context).view().size());
}

std::wstring normalizeSpace(Evaluator& evaluator, Range arguments, const Context& context) {
  const Text text(evaluator, arguments, context);
  std::wstring normalized;
  bool gap = false;
  for (wchar_t c : text.view()) {
    if (isXmlBlank(c)) {
      gap = !normalized.empty();
      continue;
    }
    if (gap) normalized += L' ';
    gap = false;
    normalized += c;
  }
  return normalized;
}

std::wstring translate(Evaluator& evaluator, Range arguments, const Context& context) {
  const Text text(evaluator, arguments, 0, context), from(evaluator, arguments, 1, context),
      to(evaluator, arguments, 2, context);
  return translated(text.view(), from.view(), to.view());
}

// Truth

bool boolean(Evaluator& evaluator, Range arguments, const Context& context) {
  return evaluator.boolean(evaluator.argument(arguments, 0), context);
}

bool negated(Evaluator& evaluator, Range arguments, const Context& context) {
  return !evaluator.boolean(evaluator.argument(arguments, 0), context);
}

bool always(Evaluator&, Range, const Context&) { return true; }

bool never(Evaluator&, Range, const Context&) { return false; }

// Among more, a name is looked for by the collection, which has an index then.
constexpr unsigned fewAttributes = 9;

std::optional<AttributeView> languageOf(Evaluator& evaluator, const iNode* element) {
  for (; element; element = element->findParent()) {
    evaluator.allowance().spend();
    const unsigned count = element->attributeCount();
    if (count > fewAttributes) {
      const iPropertyCollection* properties = element->getProperties();
      if (const iProperty* language = properties->find(L"xml:lang")) return AttributeView::of(*language);
      continue;
    }
    for (unsigned i = 0; i < count; ++i) {
      const AttributeView view = element->viewAttribute(i);
      if (equalFolded(view.name, L"xml:lang")) return view;
    }
  }
  return std::nullopt;
}

// True for the language that the nearest xml:lang names, and for a more general one.
bool lang(Evaluator& evaluator, Range arguments, const Context& context) {
  const Text text(evaluator, arguments, 0, context);
  const std::wstring_view wanted = text.view();
  const std::optional<AttributeView> found = languageOf(evaluator, context.item.element);
  if (!found) return false;
  std::wstring room;
  const std::wstring_view language = Evaluator::viewText(*found, room);
  return equalFolded(language.substr(0, wanted.size()), wanted) &&
         (language.size() == wanted.size() || language[wanted.size()] == L'-');
}

// Numbers

double number(Evaluator& evaluator, Range arguments, const Context& context) {
  std::wstring room;
  if (arguments.count == 0) return evaluator.numberOf(context.item, room);
  return evaluator.number(evaluator.argument(arguments, 0), context);
}

double sum(Evaluator& evaluator, Range arguments, const Context& context) {
  double sum = 0;
  std::wstring room;
  evaluator.visitNodes(evaluator.argument(arguments, 0), context, [&](const Item& item) {
    sum += evaluator.numberOf(item, room);
    return true;
  });
  return sum;
}

double floorOf(Evaluator& evaluator, Range arguments, const Context& context) {
  return std::floor(evaluator.number(evaluator.argument(arguments, 0), context));
}

double ceilingOf(Evaluator& evaluator, Range arguments, const Context& context) {
  return std::ceil(evaluator.number(evaluator.argument(arguments, 0), context));
}

double roundOf(Evaluator& evaluator, Range arguments, const Context& context) {
  return roundHalfUp(evaluator.number(evaluator.argument(arguments, 0), context));
}

constexpr Function toBoolean(std::wstring_view name, uint32_t least, uint32_t most,
                             bool (*body)(Evaluator&, Range, const Context&), bool contextual = false) {
  return {name, Type::boolean, least, most, Arguments::any, body, nullptr, nullptr, contextual};
}

constexpr Function toNumber(std::wstring_view name, uint32_t least, uint32_t most, Arguments arguments,
                            double (*body)(Evaluator&, Range, const Context&)) {
  return {name, Type::number, least, most, arguments, nullptr, body, nullptr, false};
}

constexpr Function toText(std::wstring_view name, uint32_t least, uint32_t most, Arguments arguments,
                          std::wstring (*body)(Evaluator&, Range, const Context&)) {
  return {name, Type::text, least, most, arguments, nullptr, nullptr, body, false};
}

constexpr uint32_t anyNumber = UINT32_MAX;

constexpr Function functions[] = {
    toNumber(L"last", 0, 0, Arguments::position, last),
    toNumber(L"position", 0, 0, Arguments::position, position),
    toNumber(L"count", 1, 1, Arguments::nodes, count),
    {L"id", Type::nodes, 1, 1, Arguments::any},
    toText(L"local-name", 0, 1, Arguments::nodesOrContext, localNameText),
    toText(L"namespace-uri", 0, 1, Arguments::nodesOrContext, namespaceUri),
    toText(L"name", 0, 1, Arguments::nodesOrContext, nameText),
    toText(L"string", 0, 1, Arguments::anyOrContext, string),
    toText(L"concat", 2, anyNumber, Arguments::any, concat),
    toBoolean(L"starts-with", 2, 2, startsWith),
    toBoolean(L"contains", 2, 2, contains),
    toText(L"substring-before", 2, 2, Arguments::any, substringBefore),
    toText(L"substring-after", 2, 2, Arguments::any, substringAfter),
    toText(L"substring", 2, 3, Arguments::any, substring),
    toNumber(L"string-length", 0, 1, Arguments::anyOrContext, stringLength),
    toText(L"normalize-space", 0, 1, Arguments::anyOrContext, normalizeSpace),
    toText(L"translate", 3, 3, Arguments::any, translate),
    toBoolean(L"boolean", 1, 1, boolean),
    toBoolean(L"not", 1, 1, negated),
    toBoolean(L"true", 0, 0, always),
    toBoolean(L"false", 0, 0, never),
    toBoolean(L"lang", 1, 1, lang, true),
    toNumber(L"number", 0, 1, Arguments::anyOrContext, number),
    toNumber(L"sum", 1, 1, Arguments::nodes, sum),
    toNumber(L"floor", 1, 1, Arguments::any, floorOf),
    toNumber(L"ceiling", 1, 1, Arguments::any, ceilingOf),
    toNumber(L"round", 1, 1, Arguments::any, roundOf),
};

}  // namespace

const Function* findFunction(std::wstring_view name) noexcept {
  const auto* found = std::ranges::find(functions, name, &Function::name);
  return found == std::end(functions) ? nullptr : found;
}

}  // namespace tovin::xpath
