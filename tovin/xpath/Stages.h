// How the steps of a path are taken: simplified, and grouped into stages.
#pragma once

#include <vector>

#include "tovin/xpath/Expression.h"

namespace tovin::xpath {

/// The same path in fewer steps: //x becomes descendant::x unless a predicate counts, a '.' is dropped.
std::vector<Step> simplified(std::vector<Step> steps);

/// Adds the steps to the expression, grouped into stages.
Range addStages(Expression& expression, std::vector<Step> steps);

}  // namespace tovin::xpath
