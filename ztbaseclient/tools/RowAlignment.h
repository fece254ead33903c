#pragma once

#include <span>
#include <vector>

#include "ztbaseclient/tools/TableRow.h"

// Which rows of two stretches belong together.
namespace differences {

// Indices of a row in each stretch; `none` for a row that stands alone.
struct RowPair {
  static constexpr size_t none = static_cast<size_t>(-1);
  size_t first = none;
  size_t second = none;
};

struct Alignment {
  // In order; every row stands in it once.
  std::vector<RowPair> pairs;
  // Whether rows were taken in pairs as they came because comparing them all would have been too much.
  bool byBlocks = false;
};

// Rows whose text stands once in each stretch, in the same order in both, divide them; between those, few
// rows are aligned by what they have in common. Takes time linear in the rows.
Alignment align(std::span<const Row> first, std::span<const Row> second, RowComparison& comparison);

}  // namespace differences
