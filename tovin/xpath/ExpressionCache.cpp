#include "tovin/xpath/ExpressionCache.h"

#include "tovin/xpath/Parser.h"

namespace tovin::xpath {

// Never destroyed: queries may be asked while the process ends.
ExpressionCache& ExpressionCache::shared() {
  static auto* cache = new ExpressionCache;
  return *cache;
}

ExpressionCache::Compiled ExpressionCache::get(std::wstring_view text) {
  if (text.size() > longestKept) return std::make_shared<const Expression>(Parser(text).parse());
  if (Compiled known = find(text)) return known;
  auto compiled = std::make_shared<const Expression>(Parser(text).parse());
  keep(compiled);
  return compiled;
}

ExpressionCache::Compiled ExpressionCache::find(std::wstring_view text) {
  AutoCriticalSection section(lock_);
  section.lock(lockTimeout, true);
  const auto place = places_.find(text);
  if (place == places_.end()) return nullptr;
  recent_.splice(recent_.begin(), recent_, place->second);
  return *place->second;
}

void ExpressionCache::keep(const Compiled& compiled) {
  AutoCriticalSection section(lock_);
  section.lock(lockTimeout, true);
  if (places_.contains(compiled->source)) return;  // another thread was quicker
  recent_.push_front(compiled);
  try {
    places_.emplace(compiled->source, recent_.begin());
  } catch (...) {
    recent_.pop_front();
    throw;
  }
  if (recent_.size() <= mostExpressions) return;
  places_.erase(recent_.back()->source);
  recent_.pop_back();
}

}  // namespace tovin::xpath
