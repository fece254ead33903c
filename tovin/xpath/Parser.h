// Compiles a query: the grammar of XPath 1.0 (W3C), a function a rule.
#pragma once

#include <optional>
#include <string_view>

#include "tovin/xpath/Expression.h"

namespace tovin::xpath {

/// Throws what Lexer::fail says for a text that is no query.
class Parser {
 public:
  explicit Parser(std::wstring_view text) : lexer_(text) { expression_.source = text; }
  Expression parse();

 private:
  // Steps and predicates lie together in the lists of the expression; while they are collected they wait
  // here, because what is nested in them comes first.
  using Steps = std::vector<Step>;
  using Predicates = std::vector<Predicate>;
  struct Nesting;

  TermId parseExpression();
  TermId parseBinary(size_t level);
  TermId parseComparisons(size_t level);
  TermId parseUnary();
  TermId parseUnion();
  TermId parsePath();
  TermId parseFilteredPath();
  TermId parsePrimary();
  TermId parseNumber();
  TermId parseLiteral();
  TermId parseCall();
  TermId parseLocationPath();
  void parseRelativePath(Steps& steps);
  void parseStep(Steps& steps);
  Axis parseAxis();
  NodeTest parseNodeTest();
  NodeTest parseNodeType();
  void parsePredicates(Predicates& predicates);

  bool accept(Token token);
  void expect(Token token, std::wstring_view what);
  bool atPrimary() const;
  bool atStep() const;
  std::optional<NodeTest::Kind> nodeTypeHere() const;

  TermId addTerm(Term term);
  TermId addChain(TermKind kind, Type type, const std::vector<Operand>& operands);
  TermId addPath(Path path, Steps steps, size_t position);
  void forgetPredicates(const Steps& steps);
  Range addPredicates(const Predicates& predicates);
  Predicate makePredicate(TermId term) const;
  bool isLastCall(const Term& term) const;
  void requireNodes(TermId term, size_t position, std::wstring_view what) const;
  void checkCall(const Function& function, const std::vector<TermId>& arguments, size_t position) const;

  Lexer lexer_;
  Expression expression_;
  unsigned depth_ = 0;
  unsigned predicateDepth_ = 0;
};

}  // namespace tovin::xpath
