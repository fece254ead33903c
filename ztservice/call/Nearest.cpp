#include "ztservice/call/Nearest.h"

#include <algorithm>

namespace ztservice::call {

namespace {

constexpr size_t longest = 64;  // a longer word is no mistyped one

// How many letters have to be put in, taken out, exchanged, or swapped with their neighbour.
size_t distance(const std::string& a, const std::string& b) {
  std::vector<std::vector<size_t>> rows(a.size() + 1, std::vector<size_t>(b.size() + 1));
  for (size_t i = 0; i <= a.size(); ++i) {
    for (size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        rows[i][j] = i + j;
        continue;
      }
      const size_t exchanged = rows[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      rows[i][j] = std::min({rows[i - 1][j] + 1, rows[i][j - 1] + 1, exchanged});
      const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (swapped) rows[i][j] = std::min(rows[i][j], rows[i - 2][j - 2] + 1);
    }
  }
  return rows[a.size()][b.size()];
}

}  // namespace

std::string nearest(const std::string& word, const std::vector<std::string>& words) {
  if (word.size() > longest) return {};
  const std::string* best = nullptr;
  size_t least = 0;
  for (const std::string& one : words) {
    if (one.size() > 2 * longest) continue;
    const size_t changes = distance(word, one);
    if (best && changes >= least) continue;
    best = &one;
    least = changes;
  }
  if (!best) return {};
  const size_t letters = best->size() - std::min(best->find_first_not_of('-'), best->size());
  return least <= std::max<size_t>(1, letters / 3) ? *best : std::string();
}

std::string suggestion(const std::string& word, const std::vector<std::string>& words) {
  const std::string meant = nearest(word, words);
  return meant.empty() ? std::string() : "; did you mean \"" + meant + "\"?";
}

}  // namespace ztservice::call
