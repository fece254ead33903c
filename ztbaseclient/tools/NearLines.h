#pragma once

#include <string_view>

// Whether a pair of plain lines leaves a comparison with tolerance as it is: lines that are equal, or differ
// only in decimal numbers that share more digits than the worst pair so far. What it does not pass may do so
// too; it is then looked at character by character.
class NearLines {
 public:
  // The worst measure so far; NaN for none.
  explicit NearLines(double worst);

  // Lines of ASCII without their ends, zero bytes and carriage returns.
  bool pass(std::string_view line1, std::string_view line2);
  // Whether a pair that passed was not equal.
  bool differ() const noexcept { return differ_; }

 private:
  bool passNumbers(const char*& at1, const char* end1, const char*& at2, const char* end2) const;

  // Differences relative to the number, below which a pair is surely better than the worst.
  double limit_;
  bool differ_ = false;
};
