#pragma once

#include <string>

/// A table of computed measurements, as a job's result may be: the same at every call.
namespace measurements {

constexpr int allDigits = 12;
constexpr int fewDigits = 7;

/// A line for each compound: its name, its mass and its similarity, with so many significant digits.
std::string table(int digits);

}  // namespace measurements
