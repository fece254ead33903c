#include "ztclient/session/Measurements.h"

#include <charconv>
#include <cmath>

namespace {

constexpr int lines = 5000;
constexpr double lightest = 180.0;
constexpr double spread = 320.0;

void append(std::string& text, double number, int digits) {
  char buffer[64];
  const auto end =
      std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::general, digits).ptr;
  text.append(buffer, end);
}

// Between 0 and 1, spread evenly: the multiples of the golden ratio's fraction.
double fraction(int i) {
  const double multiple = i * 0.6180339887498949;
  return multiple - std::floor(multiple);
}

}  // namespace

std::string measurements::table(int digits) {
  std::string text = "# name\tmass\tsimilarity\n";
  for (int i = 1; i <= lines; ++i) {
    text += "C" + std::to_string(i) + '\t';
    append(text, lightest + spread * fraction(i), digits);
    text += '\t';
    append(text, 0.5 + 0.5 * fraction(7 * i), digits);
    text += '\n';
  }
  return text;
}
