#include "ztbaseclient/tools/RowAlignment.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace differences {
namespace {

// Stretches of which each row is compared with each have no more pairs.
constexpr size_t mostCompared = 64 * 64;

// What it costs to leave a row alone; a pair that costs more than two of them is none.
constexpr double alone = 0.55;

struct Occurrence {
  size_t count1 = 0, count2 = 0;
  size_t first = 0, second = 0;
};

// The longest run of anchors whose places rise in both stretches. They come in the order of the first.
std::vector<RowPair> rising(const std::vector<RowPair>& anchors) {
  std::vector<size_t> ends;  // of the best run of each length, the anchor that ends it
  std::vector<size_t> before(anchors.size(), RowPair::none);
  for (size_t i = 0; i < anchors.size(); ++i) {
    const auto place = std::ranges::lower_bound(ends, anchors[i].second, {},
                                                [&](size_t end) { return anchors[end].second; });
    if (place != ends.begin()) before[i] = *(place - 1);
    if (place == ends.end())
      ends.push_back(i);
    else
      *place = i;
  }
  std::vector<RowPair> run;
  for (size_t at = ends.empty() ? RowPair::none : ends.back(); at != RowPair::none; at = before[at])
    run.push_back(anchors[at]);
  std::ranges::reverse(run);
  return run;
}

class Aligner {
 public:
  Aligner(std::span<const Row> first, std::span<const Row> second, RowComparison& comparison)
      : first_(first), second_(second), comparison_(comparison) {}

  Alignment run() {
    std::vector<RowPair> anchors = anchorsBy([](const Row& row) { return std::string_view(row.text); });
    if (anchors.empty() && first_.size() * second_.size() > mostCompared)
      anchors = anchorsBy([](const Row& row) { return row.fields.empty() ? "" : row.field(0); });
    for (const RowPair& anchor : anchors) {
      alignUpTo(anchor.first, anchor.second);
      takePair();
    }
    alignUpTo(first_.size(), second_.size());
    return std::move(result_);
  }

 private:
  template <class TextOf>
  std::vector<RowPair> anchorsBy(TextOf&& textOf) const {
    std::unordered_map<std::string_view, Occurrence> occurrences;
    for (size_t i = 0; i < first_.size(); ++i) {
      Occurrence& occurrence = occurrences[textOf(first_[i])];
      ++occurrence.count1;
      occurrence.first = i;
    }
    for (size_t i = 0; i < second_.size(); ++i) {
      const auto place = occurrences.find(textOf(second_[i]));
      if (place == occurrences.end()) continue;
      ++place->second.count2;
      place->second.second = i;
    }
    std::vector<RowPair> anchors;
    for (size_t i = 0; i < first_.size(); ++i) {
      const Occurrence& occurrence = occurrences.find(textOf(first_[i]))->second;
      if (occurrence.count1 == 1 && occurrence.count2 == 1)
        anchors.push_back({occurrence.first, occurrence.second});
    }
    return rising(anchors);
  }

  void takePair() { result_.pairs.push_back({at1_++, at2_++}); }
  void takeFirst() { result_.pairs.push_back({at1_++, RowPair::none}); }
  void takeSecond() { result_.pairs.push_back({RowPair::none, at2_++}); }

  // What matches at both ends is taken first, so that the middle is small.
  void alignUpTo(size_t end1, size_t end2) {
    while (at1_ < end1 && at2_ < end2 && comparison_.matches(first_[at1_], second_[at2_])) takePair();
    size_t middle1 = end1, middle2 = end2;
    while (at1_ < middle1 && at2_ < middle2 &&
           comparison_.matches(first_[middle1 - 1], second_[middle2 - 1])) {
      --middle1;
      --middle2;
    }
    if ((middle1 - at1_) * (middle2 - at2_) <= mostCompared)
      alignByCost(middle1, middle2);
    else
      takeAsTheyCome(middle1, middle2);
    while (at1_ < end1) takePair();
  }

  void takeAsTheyCome(size_t end1, size_t end2) {
    result_.byBlocks = true;
    while (at1_ < end1 && at2_ < end2) takePair();
    takeRest(end1, end2);
  }

  void takeRest(size_t end1, size_t end2) {
    while (at1_ < end1) takeFirst();
    while (at2_ < end2) takeSecond();
  }

  // The cheapest way, by the costs of all ends: cost(i, j) is that of aligning all rows from i and from j on.
  void alignByCost(size_t end1, size_t end2) {
    const size_t rows = end1 - at1_, columns = end2 - at2_, begin1 = at1_, begin2 = at2_;
    if (rows == 0 || columns == 0) return takeRest(end1, end2);
    std::vector<double> costs((rows + 1) * (columns + 1)), pairCosts(rows * columns);
    const auto cost = [&](size_t i, size_t j) -> double& { return costs[i * (columns + 1) + j]; };
    const auto pairCost = [&](size_t i, size_t j) -> double& { return pairCosts[i * columns + j]; };
    for (size_t i = rows + 1; i-- > 0;) {
      for (size_t j = columns + 1; j-- > 0;) {
        if (i == rows || j == columns) {
          cost(i, j) = alone * static_cast<double>(rows - i + columns - j);
          continue;
        }
        pairCost(i, j) = comparison_.distance(first_[begin1 + i], second_[begin2 + j]);
        cost(i, j) =
            std::min({pairCost(i, j) + cost(i + 1, j + 1), alone + cost(i + 1, j), alone + cost(i, j + 1)});
      }
    }
    while (at1_ < end1 && at2_ < end2) {
      const size_t i = at1_ - begin1, j = at2_ - begin2;
      if (cost(i, j) == pairCost(i, j) + cost(i + 1, j + 1))
        takePair();
      else if (cost(i, j) == alone + cost(i + 1, j))
        takeFirst();
      else
        takeSecond();
    }
    takeRest(end1, end2);
  }

  std::span<const Row> first_, second_;
  RowComparison& comparison_;
  size_t at1_ = 0, at2_ = 0;
  Alignment result_;
};

}  // namespace

Alignment align(std::span<const Row> first, std::span<const Row> second, RowComparison& comparison) {
  return Aligner(first, second, comparison).run();
}

}  // namespace differences
