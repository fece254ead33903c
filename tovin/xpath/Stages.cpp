#include "tovin/xpath/Stages.h"

#include <utility>

namespace tovin::xpath {
namespace {

// A run's states fit into a word, with one more for its beginning.
constexpr uint32_t longestRun = 60;

bool takesEverything(const Step& step, Axis axis) {
  return step.axis == axis && step.test.kind == NodeTest::Kind::node && step.predicates.count == 0;
}

// A walk answers what goes down and, but for single children, does not count.
bool isDownward(const Step& step) {
  switch (step.axis) {
    case Axis::child:
    case Axis::attribute:
      return true;
    case Axis::descendant:
    case Axis::descendantOrSelf:
      return !step.positional;
    default:
      return false;
  }
}

void note(Stage& stage, const Step& step, uint32_t index) {
  const uint64_t bit = uint64_t{1} << index;
  if (step.axis == Axis::attribute) stage.attributes |= bit;
  if (step.axis == Axis::child) (step.positional ? stage.chosen : stage.children) |= bit;
  if (step.axis == Axis::descendant || step.axis == Axis::descendantOrSelf) stage.descendants |= bit;
  if (step.axis == Axis::descendantOrSelf) stage.selves |= bit;
}

bool continues(const Stage& stage, const Step& step) {
  return stage.downward && isDownward(step) && !stage.attributes && stage.steps.count < longestRun;
}

}  // namespace

std::vector<Step> simplified(std::vector<Step> steps) {
  std::vector<Step> result;
  for (Step& step : steps) {
    const bool follows = !result.empty() && takesEverything(result.back(), Axis::descendantOrSelf);
    if (takesEverything(step, Axis::self)) {
      if (result.empty()) result.push_back(std::move(step));
      continue;
    }
    if (result.size() == 1 && takesEverything(result.back(), Axis::self)) result.pop_back();
    if (follows && takesEverything(step, Axis::descendantOrSelf)) continue;
    if (follows && !step.positional && (step.axis == Axis::child || step.axis == Axis::descendant)) {
      result.pop_back();
      step.axis = Axis::descendant;
    }
    result.push_back(std::move(step));
  }
  return result;
}

Range addStages(Expression& expression, std::vector<Step> steps) {
  Range stages{static_cast<uint32_t>(expression.stages.size()), 0};
  for (Step& step : steps) {
    const auto position = static_cast<uint32_t>(expression.steps.size());
    if (stages.count == 0 || !continues(expression.stages.back(), step)) {
      Stage stage;
      stage.steps.first = position;
      stage.downward = isDownward(step);
      expression.stages.push_back(stage);
      ++stages.count;
    }
    Stage& stage = expression.stages.back();
    if (stage.downward) note(stage, step, stage.steps.count);
    ++stage.steps.count;
    expression.steps.push_back(std::move(step));
  }
  return stages;
}

}  // namespace tovin::xpath
