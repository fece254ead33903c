// One walk that answers a whole run of downward steps, whatever there is of // in it.
#pragma once

#include <vector>

#include "tovin/xpath/Expression.h"
#include "tovin/xpath/NodeSet.h"

namespace tovin::xpath {

class Evaluator;

/// Goes down from the contexts and carries, for each open element, which steps may go on from it: so every
/// element is met once, in document order, and takes each step once. Its stack is on the heap.
class DownwardWalk {
 public:
  /// Borrows everything. Nested contexts are met on the way; then there must be no attributes among them.
  DownwardWalk(Evaluator& evaluator, const Stage& stage, const NodeSet& contexts);

  /// False when the visitor wanted no more.
  bool run(Visit visit);
  /// Whether some of what was visited lay below other.
  bool foundNested() const noexcept { return foundNested_; }

 private:
  // Bit i: the steps before step i led here, so that step i may go on from here.
  using States = uint64_t;

  struct Frame {
    Children children;
    size_t next = 0;
    States own = 0;
    States reach = 0;    // own and those of all elements above
    size_t choices = 0;  // where its part of choices_, chosen_ and below_ begins
    size_t chosen = 0;
    size_t below = 0;
    bool insideFound = false;
    bool choicesOnly = false;
    bool oneChoiceOnly = false;
    bool goesDeeper = false;
  };
  // What one counting step chose among the children of a frame: a part of chosen_.
  struct Choice {
    uint32_t step;
    size_t next;
    size_t end;
  };

  bool isPlainSearch() const noexcept;
  bool search(Children top, Visit visit);
  bool isPlainPath() const noexcept;
  bool follow(Children top, Visit visit);
  bool begin(const Item& context, Visit visit);
  bool meet(Frame& frame, Visit visit);
  bool meetChosen(Frame& frame, Visit visit);
  bool enter(const Item& child, const Frame& above, States own, Children below, Visit visit);
  States statesAt(const Item& item, States own, States firing);
  States takeChosen(const Frame& frame, const iNode& child);
  bool emit(const Item& item, const Frame& above, States own, Visit visit);
  void open(const Item& item, const Frame& above, States own, Children children);
  bool mayGoDeeper(const Frame& frame) const;
  void choose(const Item& item, Frame& frame);
  bool isExhausted(const Frame& frame) const;
  void lookAhead(Frame& frame);
  void fetchAttributes(const Frame& frame, const iNode& child);
  void close();

  Evaluator& evaluator_;
  const Stage& stage_;
  const std::vector<Item>& contexts_;
  const bool meetsContexts_;
  const States final_;
  const States inspecting_;
  size_t nextContext_ = 0;
  bool foundNested_ = false;
  std::vector<Frame> frames_;
  std::vector<Choice> choices_;
  std::vector<Item> chosen_;
  std::vector<Children> below_;
};

}  // namespace tovin::xpath
