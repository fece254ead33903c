// The compiled form of a query: flat lists that refer to each other by index, so that neither its length nor
// its end costs stack.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tovin/xpath/Lexer.h"
#include "tovin/xpath/NodeTest.h"

namespace tovin::xpath {

struct Function;

/// What a term gives; known before any tree is seen, because there are no variables.
enum class Type : uint8_t { nodes, boolean, number, text };

enum class Axis : uint8_t {
  ancestor,
  ancestorOrSelf,
  attribute,
  child,
  descendant,
  descendantOrSelf,
  following,
  followingSibling,
  parent,
  preceding,
  precedingSibling,
  self,
};

using TermId = uint32_t;

/// A consecutive part of one of the expression's lists.
struct Range {
  uint32_t first = 0;
  uint32_t count = 0;
  uint32_t end() const noexcept { return first + count; }
};

struct Predicate {
  enum class Kind : uint8_t {
    condition,   // by the node alone
    index,       // [k]
    last,        // [last()]
    positional,  // anything else that asks for the position
  };
  Kind kind = Kind::condition;
  // Met again and again for the same node, and worth remembering.
  bool remembered = false;
  TermId term = 0;
  double index = 0;
};

struct Step {
  Axis axis = Axis::child;
  NodeTest test;
  Range predicates;
  bool positional = false;
};

/// Steps that are taken together: either a run of downward ones, which one walk answers, or a single other
/// one.
struct Stage {
  Range steps;
  bool downward = false;
  // Bit i stands for step i of the run.
  uint64_t children = 0;     // child steps whose predicates do not ask for the position
  uint64_t chosen = 0;       // child steps whose predicates do
  uint64_t descendants = 0;  // descendant and descendant-or-self
  uint64_t selves = 0;       // descendant-or-self
  uint64_t attributes = 0;   // an attribute step, always the last
};

struct Path {
  enum class Start : uint8_t { context, root, term };
  Start start = Start::context;
  TermId base = 0;       // of Start::term
  Range basePredicates;  // of Start::term
  Range stages;
};

enum class TermKind : uint8_t {
  literal,
  number,
  disjunction,
  conjunction,
  comparison,
  sum,      // + and -
  product,  // *, div and mod
  negation,
  unite,
  path,
  call,
};

struct Operand {
  Token operation;  // what joins it to those before
  TermId term;
};

struct Term {
  TermKind kind = TermKind::literal;
  Type type = Type::text;
  // Whether the result depends on the context's position or size, or on its node.
  bool positional = false;
  bool contextual = false;
  bool insidePredicate = false;
  // Whether it visits other elements.
  bool walks = false;
  double number = 0;
  uint32_t index = 0;  // of the literal or the path
  const Function* function = nullptr;
  Range operands;
};

struct Expression {
  std::wstring source;
  std::vector<Term> terms;
  std::vector<Operand> operands;
  std::vector<Path> paths;
  std::vector<Stage> stages;
  std::vector<Step> steps;
  std::vector<Predicate> predicates;
  std::vector<std::wstring> literals;
  TermId root = 0;
};

}  // namespace tovin::xpath
