// Which items are enough to reach all that an axis reaches from a whole set.
#pragma once

#include "tovin/xpath/Expression.h"
#include "tovin/xpath/NodeSet.h"

namespace tovin::xpath {

/// A part of the items, which are in document order: from it an axis without counting predicates reaches the
/// same, without going the same ways again and again.
std::vector<Item> sufficient(Axis axis, const std::vector<Item>& items);

}  // namespace tovin::xpath
