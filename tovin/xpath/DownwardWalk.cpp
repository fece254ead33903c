#include "tovin/xpath/DownwardWalk.h"

#include <bit>

#include "tovin/xpath/Evaluator.h"

namespace tovin::xpath {
namespace {

constexpr uint64_t bit(uint32_t index) { return uint64_t{1} << index; }

}  // namespace

DownwardWalk::DownwardWalk(Evaluator& evaluator, const Stage& stage, const NodeSet& contexts)
    : evaluator_(evaluator),
      stage_(stage),
      contexts_(contexts.items),
      meetsContexts_(contexts.nested && contexts.items.size() > 1),
      final_(stage.attributes ? stage.attributes : bit(stage.steps.count)) {}

bool DownwardWalk::run(Visit visit) {
  while (nextContext_ < contexts_.size()) {
    if (!begin(contexts_[nextContext_++], visit)) return false;
    while (!frames_.empty()) {
      Frame& frame = frames_.back();
      if (frame.next == frame.children.size() || (frame.choicesOnly && isExhausted(frame))) {
        close();
      } else if (!meet(*frame.children[frame.next++], visit)) {
        return false;
      }
    }
  }
  return true;
}

bool DownwardWalk::begin(const Item& context, Visit visit) {
  const States own = statesAt(context, bit(0), stage_.selves & bit(0));
  if (!emit(context, {}, own, visit)) return false;
  if (!context.isAttribute()) open(context, {}, own);
  return true;
}

bool DownwardWalk::meet(const iNode& child, Visit visit) {
  evaluator_.allowance().spend();
  const Frame& frame = frames_.back();
  States own = frame.choices < choices_.size() ? takeChosen(frame, child) : 0;
  if (meetsContexts_ && nextContext_ < contexts_.size() && contexts_[nextContext_].element == &child) {
    ++nextContext_;
    own |= bit(0);
  }
  const States firing =
      (frame.own & stage_.children) | (frame.reach & stage_.descendants) | (own & stage_.selves);
  if (firing) own = statesAt({&child}, own, firing);
  if ((own & final_) && !emit({&child}, frame, own, visit)) return false;
  open({&child}, frame, own);
  return true;
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
void DownwardWalk::open(const Item& item, const Frame& above, States own) {
  Frame frame;
  frame.own = own;
  frame.reach = above.reach | own;
  const bool choosing = own & stage_.chosen;
  const bool live = (own & stage_.children) || (frame.reach & stage_.descendants) || meetsContexts_;
  if (!live && !choosing) return;
  frame.children = evaluator_.tree().childrenOf(item.element);
  if (frame.children.empty()) return;
  frame.insideFound = above.insideFound || (own & final_);
  frame.choicesOnly = !live;
  frame.choices = choices_.size();
  frame.chosen = chosen_.size();
  if (choosing) choose(item, frame);
  frames_.push_back(frame);
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
  frames_.pop_back();
}

}  // namespace tovin::xpath
