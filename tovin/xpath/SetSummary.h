// What the nodes of a set are compared by, so that not each has to be compared with each.
#pragma once

#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

#include "tovinCore/Units.h"

namespace tovin::xpath {

/// Equality of texts by their units.
inline bool equalTexts(std::wstring_view left, std::wstring_view right) {
  return left == right || compareUnits(left, right) == 0;
}

struct TextHash {
  using is_transparent = void;
  size_t operator()(std::wstring_view text) const noexcept { return hashKeyed(text); }
};

struct TextEqual {
  using is_transparent = void;
  bool operator()(std::wstring_view left, std::wstring_view right) const { return equalTexts(left, right); }
};

/// Only what the operation of the comparison asks for is filled in.
struct SetSummary {
  bool isEmpty() const noexcept { return texts.empty() && !first && !anyNumber; }

  // For =
  std::unordered_set<std::wstring, TextHash, TextEqual> texts;
  // For !=
  std::optional<std::wstring> first;
  bool several = false;  // texts that differ
  // For the others; what is no number is in order with nothing
  bool anyNumber = false;
  double least = std::numeric_limits<double>::infinity();
  double most = -std::numeric_limits<double>::infinity();
};

}  // namespace tovin::xpath
