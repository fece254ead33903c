#include "tovin/xpath/DownwardWalk.h"

#include <algorithm>
#include <bit>

#include "tovin/xpath/Evaluator.h"

namespace tovin::xpath {
namespace {

constexpr uint64_t bit(uint32_t index) { return uint64_t{1} << index; }

constexpr size_t pieceOfChildren = 8;
constexpr size_t cacheLine = 64;
constexpr size_t nearestChildren = 4;

// What a walk asks a node for lies around the interface within its object.
void fetch(Children nodes) {
  for (const iNode* node : nodes) {
    const char* object = reinterpret_cast<const char*>(node);
    __builtin_prefetch(object);
    __builtin_prefetch(object - cacheLine);
  }
}

// The steps that look at more of an element than its name.
uint64_t inspectingSteps(const Expression& expression, const Stage& stage) {
  uint64_t steps = stage.attributes >> 1;
  for (uint32_t i = 0; i < stage.steps.count; ++i) {
    if (expression.steps[stage.steps.first + i].predicates.count > 0) steps |= bit(i);
  }
  return steps & (stage.children | stage.descendants);
}

Children upTo(Children nodes, size_t first, size_t count) {
  if (first >= nodes.size()) return {};
  return nodes.subspan(first, std::min(count, nodes.size() - first));
}

}  // namespace

DownwardWalk::DownwardWalk(Evaluator& evaluator, const Stage& stage, const NodeSet& contexts)
    : evaluator_(evaluator),
      stage_(stage),
      contexts_(contexts.items),
      meetsContexts_(contexts.nested && contexts.items.size() > 1),
      final_(stage.attributes ? stage.attributes : bit(stage.steps.count)),
      inspecting_(inspectingSteps(evaluator.expression(), stage)) {}

bool DownwardWalk::run(Visit visit) {
  const bool plainSearch = isPlainSearch();
  if (plainSearch || isPlainPath()) {
    return std::ranges::all_of(contexts_, [&](const Item& context) {
      if (context.isAttribute()) return true;
      const Children top = evaluator_.tree().childrenOf(context.element);
      return plainSearch ? search(top, visit) : follow(top, visit);
    });
  }
  while (nextContext_ < contexts_.size()) {
    if (!begin(contexts_[nextContext_++], visit)) return false;
    while (!frames_.empty()) {
      Frame& frame = frames_.back();
      if (frame.next == frame.children.size() || (frame.choicesOnly && isExhausted(frame))) {
        close();
      } else if (frame.oneChoiceOnly ? !meetChosen(frame, visit) : !meet(frame, visit)) {
        return false;
      }
    }
  }
  return true;
}

// Whether it is nothing but //name from contexts that do not overlap.
bool DownwardWalk::isPlainSearch() const noexcept {
  return stage_.steps.count == 1 && stage_.descendants && !stage_.selves && !inspecting_ && !meetsContexts_;
}

// The walk for that: there are no states to carry, only whether something above was found.
bool DownwardWalk::search(Children top, Visit visit) {
  struct Level {
    Children left;
    bool insideFound;
  };
  std::vector<Level> levels{{top, false}};
  fetch(upTo(top, 0, nearestChildren));
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.left.empty()) {
      levels.pop_back();
      continue;
    }
    const Item item{level.left.front()};
    fetch(upTo(level.left, nearestChildren, 1));
    level.left = level.left.subspan(1);
    evaluator_.allowance().spend();
    const Children below = item.element->getChildren();
    fetch(upTo(below, 0, nearestChildren));
    bool insideFound = level.insideFound;
    if (evaluator_.matches(stage_.steps.first, item)) {
      foundNested_ = foundNested_ || insideFound;
      insideFound = true;
      if (!visit(item)) return false;
    }
    if (!below.empty()) levels.push_back({below, insideFound});
  }
  return true;
}

// Whether it is nothing but a/b/c from contexts that do not overlap.
bool DownwardWalk::isPlainPath() const noexcept {
  return stage_.children == bit(stage_.steps.count) - 1 && !stage_.attributes && !stage_.descendants &&
         !stage_.selves && !stage_.chosen && !inspecting_ && !meetsContexts_;
}

// The walk for that: how deep a node lies tells its step, and what is found lies at one depth.
bool DownwardWalk::follow(Children top, Visit visit) {
  std::vector<Children> levels{top};
  fetch(upTo(top, 0, nearestChildren));
  while (!levels.empty()) {
    Children& left = levels.back();
    if (left.empty()) {
      levels.pop_back();
      continue;
    }
    const Item item{left.front()};
    fetch(upTo(left, nearestChildren, 1));
    left = left.subspan(1);
    evaluator_.allowance().spend();
    const auto depth = static_cast<uint32_t>(levels.size());
    if (!evaluator_.matches(stage_.steps.first + depth - 1, item)) continue;
    if (depth == stage_.steps.count) {
      if (!visit(item)) return false;
      continue;
    }
    const Children below = item.element->getChildren();
    fetch(upTo(below, 0, nearestChildren));
    levels.push_back(below);
  }
  return true;
}

bool DownwardWalk::begin(const Item& context, Visit visit) {
  const States own = statesAt(context, bit(0), stage_.selves & bit(0));
  if (!emit(context, {}, own, visit)) return false;
  if (!context.isAttribute()) open(context, {}, own, evaluator_.tree().childrenOf(context.element));
  return true;
}

bool DownwardWalk::meet(Frame& frame, Visit visit) {
  evaluator_.allowance().spend();
  if (frame.next % pieceOfChildren == 0) lookAhead(frame);
  const Item child{frame.children[frame.next]};
  Children below;
  if (frame.goesDeeper) {
    const size_t at = frame.below + frame.next % pieceOfChildren;
    below = below_[at];
    if (at + 1 < below_.size()) fetch(upTo(below_[at + 1], 0, nearestChildren));
  }
  ++frame.next;
  States own = frame.choices < choices_.size() ? takeChosen(frame, *child.element) : 0;
  if (meetsContexts_ && nextContext_ < contexts_.size() && contexts_[nextContext_].element == child.element) {
    ++nextContext_;
    own |= bit(0);
  }
  const States firing =
      (frame.own & stage_.children) | (frame.reach & stage_.descendants) | (own & stage_.selves);
  if (firing) own = statesAt(child, own, firing);
  return enter(child, frame, own, below, visit);
}

// Where nothing but one step's choice is of interest, the other children are not met.
bool DownwardWalk::meetChosen(Frame& frame, Visit visit) {
  evaluator_.allowance().spend();
  Choice& choice = choices_.back();
  const Item child = chosen_[choice.next++];
  States own = bit(choice.step + 1);
  own = statesAt(child, own, own & stage_.selves);
  return enter(child, frame, own, frame.goesDeeper ? child.element->getChildren() : Children(), visit);
}

bool DownwardWalk::enter(const Item& child, const Frame& above, States own, Children below, Visit visit) {
  if ((own & final_) && !emit(child, above, own, visit)) return false;
  if (!below.empty()) open(child, above, own, below);
  return true;
}

// Asks a few children for theirs at once, so that the memory of all of them is on its way at the same time.
void DownwardWalk::lookAhead(Frame& frame) {
  const Children piece = upTo(frame.children, frame.next, pieceOfChildren);
  if (frame.next == 0) fetch(piece);
  fetch(upTo(frame.children, frame.next + pieceOfChildren, pieceOfChildren));
  for (const iNode* child : piece) fetchAttributes(frame, *child);
  if (!frame.goesDeeper) return;
  below_.resize(frame.below);
  for (const iNode* child : piece) below_.push_back(child->getChildren());
  for (size_t i = frame.below; i < below_.size(); ++i) __builtin_prefetch(below_[i].data());
}

// Where the attributes of a child will be asked for, their memory is touched beforehand.
void DownwardWalk::fetchAttributes(const Frame& frame, const iNode& child) {
  for (States steps = (frame.own | frame.reach) & inspecting_; steps; steps &= steps - 1) {
    const auto step = static_cast<uint32_t>(std::countr_zero(steps));
    if (!evaluator_.matches(stage_.steps.first + step, {&child})) continue;
    if (child.attributeCount() > 0) __builtin_prefetch(child.viewAttribute(0).name);
    return;
  }
}

// Adds the states that the firing steps lead to here; a step to itself may fire the next one.
DownwardWalk::States DownwardWalk::statesAt(const Item& item, States own, States firing) {
  while (firing) {
    const auto step = static_cast<uint32_t>(std::countr_zero(firing));
    firing &= firing - 1;
    const States next = bit(step + 1);
    if ((own & next) || !evaluator_.accepts(stage_.steps.first + step, item)) continue;
    own |= next;
    firing |= next & stage_.selves;
  }
  return own;
}

DownwardWalk::States DownwardWalk::takeChosen(const Frame& frame, const iNode& child) {
  States own = 0;
  for (size_t i = frame.choices; i < choices_.size(); ++i) {
    Choice& choice = choices_[i];
    if (choice.next == choice.end || chosen_[choice.next].element != &child) continue;
    ++choice.next;
    own |= bit(choice.step + 1);
  }
  return own;
}

bool DownwardWalk::emit(const Item& item, const Frame& above, States own, Visit visit) {
  if (!(own & final_)) return true;
  if (stage_.attributes) return evaluator_.visitStep(stage_.steps.end() - 1, item, visit);
  foundNested_ = foundNested_ || above.insideFound;
  return visit(item);
}

// Goes into the children, unless no step can go on there.
void DownwardWalk::open(const Item& item, const Frame& above, States own, Children children) {
  Frame frame;
  frame.own = own;
  frame.reach = above.reach | own;
  const bool choosing = own & stage_.chosen;
  const bool live = (own & stage_.children) || (frame.reach & stage_.descendants) || meetsContexts_;
  if (!live && !choosing) return;
  frame.children = children;
  frame.insideFound = above.insideFound || (own & final_);
  frame.choicesOnly = !live;
  frame.goesDeeper = mayGoDeeper(frame);
  frame.choices = choices_.size();
  frame.chosen = chosen_.size();
  frame.below = below_.size();
  if (choosing) choose(item, frame);
  frame.oneChoiceOnly = frame.choicesOnly && choices_.size() - frame.choices == 1;
  frames_.push_back(frame);
}

// Whether any child can come into a state from which a step goes on.
bool DownwardWalk::mayGoDeeper(const Frame& frame) const {
  const States after = (frame.own & (stage_.children | stage_.chosen)) << 1;
  return meetsContexts_ || (frame.reach & stage_.descendants) ||
         (after & (stage_.children | stage_.chosen | stage_.descendants));
}

void DownwardWalk::choose(const Item& item, Frame& frame) {
  for (States steps = frame.own & stage_.chosen; steps; steps &= steps - 1) {
    const auto step = static_cast<uint32_t>(std::countr_zero(steps));
    const size_t first = chosen_.size();
    evaluator_.visitStep(stage_.steps.first + step, item, [&](const Item& child) {
      chosen_.push_back(child);
      return true;
    });
    choices_.push_back({step, first, chosen_.size()});
  }
}

bool DownwardWalk::isExhausted(const Frame& frame) const {
  for (size_t i = frame.choices; i < choices_.size(); ++i) {
    if (choices_[i].next < choices_[i].end) return false;
  }
  return true;
}

void DownwardWalk::close() {
  choices_.resize(frames_.back().choices);
  chosen_.resize(frames_.back().chosen);
  below_.resize(frames_.back().below);
  frames_.pop_back();
}

}  // namespace tovin::xpath
