#pragma once

#include <algorithm>
#include <string>
#include <string_view>

/// Names of pairs are the same where only A to Z and a to z differ.
namespace entryNames {

inline std::string folded(std::string_view name) {
  std::string out(name);
  std::ranges::transform(out, out.begin(),
                         [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return out;
}

}  // namespace entryNames
