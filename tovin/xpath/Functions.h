// The core function library of XPath 1.0 (W3C), section 4.
#pragma once

#include <string>
#include <string_view>

#include "tovin/xpath/Expression.h"

namespace tovin::xpath {

class Evaluator;
struct Context;

/// What a function asks of its arguments.
enum class Arguments : uint8_t {
  any,
  nodes,           // a node set
  nodesOrContext,  // a node set, or none for the context node
  anyOrContext,    // anything, or none for the context node
  position,        // none: the context's position or size
};

struct Function {
  std::wstring_view name;
  Type result;
  uint32_t least;
  uint32_t most;
  Arguments arguments;
  /// Set for the result's type alone.
  bool (*boolean)(Evaluator&, Range arguments, const Context&) = nullptr;
  double (*number)(Evaluator&, Range arguments, const Context&) = nullptr;
  std::wstring (*text)(Evaluator&, Range arguments, const Context&) = nullptr;
  /// Answers from the context node without being given it.
  bool contextual = false;
};

/// Null if none.
const Function* findFunction(std::wstring_view name) noexcept;

}  // namespace tovin::xpath
