// Comparisons by XPath 1.0 (W3C), section 3.4.
#pragma once

#include "tovin/xpath/Evaluator.h"

namespace tovin::xpath {

/// Compares two terms by one of the six operators. A node set compares as any of its nodes does.
bool compareTerms(Evaluator& evaluator, TermId left, Token operation, TermId right, const Context& context);

}  // namespace tovin::xpath
