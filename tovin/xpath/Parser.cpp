#include "tovin/xpath/Parser.h"

#include <algorithm>

#include "tovin/xpath/Functions.h"
#include "tovin/xpath/Stages.h"
#include "tovin/xpath/XPathNumbers.h"

namespace tovin::xpath {
namespace {

// So deep may expressions nest: both the parser and the evaluator recurse by that.
constexpr unsigned deepest = 128;

struct BinaryLevel {
  TermKind kind;
  Type type;
  Token operations[4];
};

// OrExpr             ::= AndExpr ('or' AndExpr)*
// AndExpr            ::= EqualityExpr ('and' EqualityExpr)*
// EqualityExpr       ::= RelationalExpr (('=' | '!=') RelationalExpr)*
// RelationalExpr     ::= AdditiveExpr (('<' | '>' | '<=' | '>=') AdditiveExpr)*
// AdditiveExpr       ::= MultiplicativeExpr (('+' | '-') MultiplicativeExpr)*
// MultiplicativeExpr ::= UnaryExpr (('*' | 'div' | 'mod') UnaryExpr)*
constexpr BinaryLevel levels[] = {
    {TermKind::disjunction, Type::boolean, {Token::orOperator}},
    {TermKind::conjunction, Type::boolean, {Token::andOperator}},
    {TermKind::comparison, Type::boolean, {Token::equal, Token::notEqual}},
    {TermKind::comparison,
     Type::boolean,
     {Token::less, Token::lessOrEqual, Token::greater, Token::greaterOrEqual}},
    {TermKind::sum, Type::number, {Token::plus, Token::minus}},
    {TermKind::product, Type::number, {Token::multiply, Token::div, Token::mod}},
};

bool joins(const BinaryLevel& level, Token token) {
  return token != Token::end && std::ranges::find(level.operations, token) != std::end(level.operations);
}

struct AxisName {
  std::wstring_view name;
  Axis axis;
};

constexpr AxisName axisNames[] = {
    {L"ancestor", Axis::ancestor},
    {L"ancestor-or-self", Axis::ancestorOrSelf},
    {L"attribute", Axis::attribute},
    {L"child", Axis::child},
    {L"descendant", Axis::descendant},
    {L"descendant-or-self", Axis::descendantOrSelf},
    {L"following", Axis::following},
    {L"following-sibling", Axis::followingSibling},
    {L"parent", Axis::parent},
    {L"preceding", Axis::preceding},
    {L"preceding-sibling", Axis::precedingSibling},
    {L"self", Axis::self},
};

struct NodeType {
  std::wstring_view name;
  NodeTest::Kind kind;
};

constexpr NodeType nodeTypes[] = {{L"node", NodeTest::Kind::node},
                                  {L"text", NodeTest::Kind::nothing},
                                  {L"comment", NodeTest::Kind::nothing},
                                  {L"processing-instruction", NodeTest::Kind::nothing}};

bool visitsOthers(const Step& step) { return step.axis != Axis::attribute && step.axis != Axis::self; }

// From different nodes the axis may lead to the same one.
bool meetsAgain(const Step& step) { return visitsOthers(step) && step.axis != Axis::child; }

Step stepToAnyNode(Axis axis) {
  Step step;
  step.axis = axis;
  return step;
}

}  // namespace

// Counts one level of nesting for a scope.
struct Parser::Nesting {
  explicit Nesting(Parser& owner) : parser(owner) {
    if (++parser.depth_ > deepest) parser.lexer_.fail(L"the query nests too deep");
  }
  ~Nesting() { --parser.depth_; }
  Parser& parser;
};

Expression Parser::parse() {
  if (lexer_.token() == Token::end) lexer_.fail(L"the query is empty");
  expression_.root = parseExpression();
  if (lexer_.token() != Token::end) lexer_.fail(L"the query should end here");
  return std::move(expression_);
}

// Expr ::= OrExpr
TermId Parser::parseExpression() {
  const Nesting nesting(*this);
  return parseBinary(0);
}

TermId Parser::parseBinary(size_t level) {
  if (level == std::size(levels)) return parseUnary();
  if (levels[level].kind == TermKind::comparison) return parseComparisons(level);
  std::vector<Operand> operands{{Token::end, parseBinary(level + 1)}};
  while (joins(levels[level], lexer_.token())) {
    const Token operation = lexer_.token();
    lexer_.next();
    operands.push_back({operation, parseBinary(level + 1)});
  }
  if (operands.size() == 1) return operands[0].term;
  return addChain(levels[level].kind, levels[level].type, operands);
}

// A comparison's result is compared with the next operand, so that a row of them nests.
TermId Parser::parseComparisons(size_t level) {
  const unsigned before = depth_;
  TermId left = parseBinary(level + 1);
  while (joins(levels[level], lexer_.token())) {
    if (++depth_ > deepest) lexer_.fail(L"the query nests too deep");
    const Token operation = lexer_.token();
    lexer_.next();
    const TermId right = parseBinary(level + 1);
    left = addChain(TermKind::comparison, Type::boolean, {{Token::end, left}, {operation, right}});
  }
  depth_ = before;
  return left;
}

// UnaryExpr ::= '-'* UnionExpr
TermId Parser::parseUnary() {
  if (lexer_.token() != Token::minus) return parseUnion();
  bool negative = false;
  while (accept(Token::minus)) negative = !negative;
  const TermId operand = parseUnion();
  const Token sign = negative ? Token::minus : Token::plus;
  return addChain(TermKind::negation, Type::number, {{sign, operand}});
}

// UnionExpr ::= PathExpr ('|' PathExpr)*
TermId Parser::parseUnion() {
  const size_t position = lexer_.position();
  std::vector<Operand> operands{{Token::end, parsePath()}};
  if (lexer_.token() != Token::unite) return operands[0].term;
  constexpr std::wstring_view what = L"'|' joins node sets, and this is none,";
  requireNodes(operands[0].term, position, what);
  while (accept(Token::unite)) {
    const size_t next = lexer_.position();
    operands.push_back({Token::unite, parsePath()});
    requireNodes(operands.back().term, next, what);
  }
  return addChain(TermKind::unite, Type::nodes, operands);
}

// PathExpr ::= LocationPath | FilterExpr (('/' | '//') RelativeLocationPath)?
TermId Parser::parsePath() { return atPrimary() ? parseFilteredPath() : parseLocationPath(); }

// FilterExpr ::= PrimaryExpr Predicate*
TermId Parser::parseFilteredPath() {
  const size_t position = lexer_.position();
  Path path;
  path.start = Path::Start::term;
  path.base = parsePrimary();
  Predicates predicates;
  parsePredicates(predicates);
  Steps steps;
  if (accept(Token::doubleSlash)) {
    steps.push_back(stepToAnyNode(Axis::descendantOrSelf));
    parseRelativePath(steps);
  } else if (accept(Token::slash) && atStep()) {
    parseRelativePath(steps);
  }
  if (predicates.empty() && steps.empty()) return path.base;
  requireNodes(path.base, position, L"only a node set has predicates and steps, and this is none,");
  path.basePredicates = addPredicates(predicates);
  return addPath(path, std::move(steps), position);
}

// PrimaryExpr ::= VariableReference | '(' Expr ')' | Literal | Number | FunctionCall
TermId Parser::parsePrimary() {
  switch (lexer_.token()) {
    case Token::dollar:
      lexer_.fail(L"there are no variables,");
    case Token::literal:
      return parseLiteral();
    case Token::number:
      return parseNumber();
    case Token::openParenthesis: {
      lexer_.next();
      const TermId term = parseExpression();
      expect(Token::closeParenthesis, L"')' is expected");
      return term;
    }
    default:
      return parseCall();
  }
}

TermId Parser::parseLiteral() {
  Term term;
  term.index = static_cast<uint32_t>(expression_.literals.size());
  expression_.literals.emplace_back(lexer_.text());
  lexer_.next();
  return addTerm(term);
}

TermId Parser::parseNumber() {
  Term term;
  term.kind = TermKind::number;
  term.type = Type::number;
  term.number = textToNumber(lexer_.text());
  lexer_.next();
  return addTerm(term);
}

// FunctionCall ::= FunctionName '(' (Expr (',' Expr)*)? ')'
TermId Parser::parseCall() {
  const size_t position = lexer_.position();
  const Function* function = findFunction(lexer_.text());
  if (!function) lexer_.fail(L"there is no function of this name,");
  lexer_.next();
  lexer_.next();
  std::vector<Operand> operands;
  if (lexer_.token() != Token::closeParenthesis) {
    do {
      operands.push_back({Token::comma, parseExpression()});
    } while (accept(Token::comma));
  }
  expect(Token::closeParenthesis, L"',' or ')' is expected");
  std::vector<TermId> arguments;
  for (const Operand& operand : operands) arguments.push_back(operand.term);
  checkCall(*function, arguments, position);
  const TermId call = addChain(TermKind::call, function->result, operands);
  Term& term = expression_.terms[call];
  term.function = function;
  term.positional = term.positional || function->arguments == Arguments::position;
  const bool byContext =
      function->arguments == Arguments::nodesOrContext || function->arguments == Arguments::anyOrContext;
  term.contextual = term.contextual || function->contextual || (byContext && arguments.empty());
  return call;
}

// LocationPath         ::= RelativeLocationPath | AbsoluteLocationPath
// AbsoluteLocationPath ::= '/' RelativeLocationPath? | '//' RelativeLocationPath
TermId Parser::parseLocationPath() {
  const size_t position = lexer_.position();
  Path path;
  Steps steps;
  if (accept(Token::doubleSlash)) {
    path.start = Path::Start::root;
    steps.push_back(stepToAnyNode(Axis::descendantOrSelf));
    parseRelativePath(steps);
  } else if (accept(Token::slash)) {
    path.start = Path::Start::root;
    if (atStep()) parseRelativePath(steps);
  } else {
    parseRelativePath(steps);
  }
  return addPath(path, std::move(steps), position);
}

// RelativeLocationPath ::= Step (('/' | '//') Step)* '/'?
// The locations of nodes end in '/'.
void Parser::parseRelativePath(Steps& steps) {
  while (true) {
    parseStep(steps);
    if (accept(Token::doubleSlash)) {
      steps.push_back(stepToAnyNode(Axis::descendantOrSelf));
    } else if (!accept(Token::slash) || !atStep()) {
      return;
    }
  }
}

// Step ::= AxisSpecifier NodeTest Predicate* | '.' | '..'
void Parser::parseStep(Steps& steps) {
  if (accept(Token::dot)) return steps.push_back(stepToAnyNode(Axis::self));
  if (accept(Token::doubleDot)) return steps.push_back(stepToAnyNode(Axis::parent));
  Step step;
  step.axis = parseAxis();
  step.test = parseNodeTest();
  Predicates predicates;
  parsePredicates(predicates);
  step.predicates = addPredicates(predicates);
  step.positional = std::ranges::any_of(
      predicates, [](const Predicate& each) { return each.kind != Predicate::Kind::condition; });
  steps.push_back(std::move(step));
}

// AxisSpecifier ::= AxisName '::' | '@'?
Axis Parser::parseAxis() {
  if (accept(Token::at)) return Axis::attribute;
  if (lexer_.token() != Token::name || !lexer_.precedes(L"::")) return Axis::child;
  const auto* found = std::ranges::find(axisNames, lexer_.text(), &AxisName::name);
  if (found == std::end(axisNames)) lexer_.fail(L"there is no axis of this name,");
  lexer_.next();
  lexer_.next();
  return found->axis;
}

// NodeTest ::= NameTest | NodeType '(' Literal? ')'
// NameTest ::= '*' | NCName ':' '*' | QName
NodeTest Parser::parseNodeTest() {
  if (nodeTypeHere()) return parseNodeType();
  NodeTest test;
  switch (lexer_.token()) {
    case Token::anyName:
      test.kind = NodeTest::Kind::any;
      break;
    case Token::anyWithPrefix:
      test.kind = NodeTest::Kind::prefix;
      test.name = lexer_.text();
      break;
    case Token::name:
      test.kind = NodeTest::Kind::name;
      test.name = lexer_.text();
      break;
    default:
      lexer_.fail(L"a step is expected");
  }
  lexer_.next();
  return test;
}

std::optional<NodeTest::Kind> Parser::nodeTypeHere() const {
  if (lexer_.token() != Token::name || !lexer_.precedes(L"(")) return std::nullopt;
  const auto* found = std::ranges::find(nodeTypes, lexer_.text(), &NodeType::name);
  if (found == std::end(nodeTypes)) return std::nullopt;
  return found->kind;
}

NodeTest Parser::parseNodeType() {
  NodeTest test;
  test.kind = *nodeTypeHere();
  const bool takesName = lexer_.text() == L"processing-instruction";
  lexer_.next();
  lexer_.next();
  if (takesName) accept(Token::literal);
  expect(Token::closeParenthesis, L"')' is expected");
  return test;
}

// Predicate ::= '[' Expr ']'
void Parser::parsePredicates(Predicates& predicates) {
  ++predicateDepth_;
  while (accept(Token::openBracket)) {
    predicates.push_back(makePredicate(parseExpression()));
    expect(Token::closeBracket, L"']' is expected");
  }
  --predicateDepth_;
}

bool Parser::accept(Token token) {
  if (lexer_.token() != token) return false;
  lexer_.next();
  return true;
}

void Parser::expect(Token token, std::wstring_view what) {
  if (!accept(token)) lexer_.fail(what);
}

bool Parser::atPrimary() const {
  switch (lexer_.token()) {
    case Token::dollar:
    case Token::openParenthesis:
    case Token::literal:
    case Token::number:
      return true;
    case Token::name:
      return lexer_.precedes(L"(") && !nodeTypeHere();
    default:
      return false;
  }
}

bool Parser::atStep() const {
  switch (lexer_.token()) {
    case Token::name:
    case Token::anyName:
    case Token::anyWithPrefix:
    case Token::at:
    case Token::dot:
    case Token::doubleDot:
      return true;
    default:
      return false;
  }
}

TermId Parser::addTerm(Term term) {
  term.insidePredicate = predicateDepth_ > 0;
  expression_.terms.push_back(term);
  return static_cast<TermId>(expression_.terms.size() - 1);
}

TermId Parser::addChain(TermKind kind, Type type, const std::vector<Operand>& operands) {
  Term term;
  term.kind = kind;
  term.type = type;
  term.operands = {static_cast<uint32_t>(expression_.operands.size()),
                   static_cast<uint32_t>(operands.size())};
  for (const Operand& operand : operands) {
    const Term& part = expression_.terms[operand.term];
    term.positional = term.positional || part.positional;
    term.contextual = term.contextual || part.contextual;
    term.walks = term.walks || part.walks;
    expression_.operands.push_back(operand);
  }
  return addTerm(term);
}

TermId Parser::addPath(Path path, Steps steps, size_t position) {
  Term term;
  term.kind = TermKind::path;
  term.type = Type::nodes;
  if (path.start == Path::Start::term) {
    term.positional = expression_.terms[path.base].positional;
    term.contextual = expression_.terms[path.base].contextual;
    term.walks = expression_.terms[path.base].walks;
  } else {
    term.contextual = path.start == Path::Start::context;
  }
  if (steps.size() > UINT32_MAX / 2) lexer_.fail(position, L"the path that begins here is too long");
  term.walks = term.walks || std::ranges::any_of(steps, visitsOthers);
  if (std::ranges::none_of(steps, meetsAgain)) forgetPredicates(steps);
  path.stages = addStages(expression_, simplified(std::move(steps)));
  term.index = static_cast<uint32_t>(expression_.paths.size());
  expression_.paths.push_back(path);
  return addTerm(term);
}

// Steps that reach every node by one way only ask their predicates once for each.
void Parser::forgetPredicates(const Steps& steps) {
  for (const Step& step : steps) {
    for (uint32_t i = step.predicates.first; i < step.predicates.end(); ++i) {
      expression_.predicates[i].remembered = false;
    }
  }
}

Range Parser::addPredicates(const Predicates& predicates) {
  const Range range{static_cast<uint32_t>(expression_.predicates.size()),
                    static_cast<uint32_t>(predicates.size())};
  expression_.predicates.insert(expression_.predicates.end(), predicates.begin(), predicates.end());
  return range;
}

bool Parser::isLastCall(const Term& term) const {
  return term.kind == TermKind::call && term.function->name == L"last";
}

Predicate Parser::makePredicate(TermId id) const {
  const Term& term = expression_.terms[id];
  Predicate predicate;
  predicate.term = id;
  if (term.kind == TermKind::number) {
    predicate.kind = Predicate::Kind::index;
    predicate.index = term.number;
  } else if (isLastCall(term)) {
    predicate.kind = Predicate::Kind::last;
  } else if (term.positional || term.type == Type::number) {
    predicate.kind = Predicate::Kind::positional;
  }
  predicate.remembered = predicate.kind == Predicate::Kind::condition && predicateDepth_ > 1 && term.walks;
  return predicate;
}

void Parser::requireNodes(TermId term, size_t position, std::wstring_view what) const {
  if (expression_.terms[term].type != Type::nodes) lexer_.fail(position, what);
}

void Parser::checkCall(const Function& function, const std::vector<TermId>& arguments,
                       size_t position) const {
  if (arguments.size() < function.least) lexer_.fail(position, L"the function wants more arguments,");
  if (arguments.size() > function.most) lexer_.fail(position, L"the function wants fewer arguments,");
  if (function.arguments != Arguments::nodes && function.arguments != Arguments::nodesOrContext) return;
  for (TermId argument : arguments) requireNodes(argument, position, L"the function wants a node set,");
}

}  // namespace tovin::xpath
