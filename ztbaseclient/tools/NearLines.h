#pragma once

#include <string_view>

// The measure of how near two numbers are, the decimal digits in which they agree: of their distance by the
// smaller size. Beside a zero only what is nearly zero has one; NaN is that of others.
double sharedDigits(double x, double y);

// Whether a pair of plain lines leaves a comparison with tolerance as it is: lines that are equal, or differ
// only in decimal numbers that share as many digits as the worst pair so far. What it does not pass may do so
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

  double worst_;
  // Differences relative to the number, below which a pair is surely better than the worst.
  double limit_;
  bool differ_ = false;
};
