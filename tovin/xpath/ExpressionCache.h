// Compiled queries, kept for the next time.
#pragma once

#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "tovin/xpath/Expression.h"
#include "tovinCore/CriticalSection.h"

namespace tovin::xpath {

/// The queries that were asked last. Threads: any.
class ExpressionCache {
 public:
  using Compiled = std::shared_ptr<const Expression>;

  static ExpressionCache& shared();
  /// The query in compiled form; throws what the parser throws, and keeps nothing then.
  Compiled get(std::wstring_view text);

 private:
  static constexpr size_t mostExpressions = 256;
  /// Longer queries are compiled anew each time.
  static constexpr size_t longestKept = 1024;
  static constexpr long lockTimeout = 60'000;

  using Recent = std::list<Compiled>;

  Compiled find(std::wstring_view text);
  void keep(const Compiled& compiled);

  CriticalSection lock_;
  Recent recent_;  // the last one used in front
  // The keys are the texts of the expressions in the list.
  std::unordered_map<std::wstring_view, Recent::iterator> places_;
};

}  // namespace tovin::xpath
