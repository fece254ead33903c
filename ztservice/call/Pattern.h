#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ztservice::call {

// A regular expression of XML Schema (part 2, appendix F): matched against whole texts, by all ways at once,
// so that time grows with the text and the expression only.
//
// Characters beyond ASCII are of any category that is asked for: without their tables, nothing valid is
// refused.
class Pattern {
 public:
  // None for what is no expression, or one that is too large.
  static std::optional<Pattern> compile(std::string_view expression);

  bool matches(std::string_view text) const;
  // The shortest text of a length that it takes, in characters; none where it takes none up to a limit.
  std::optional<std::string> sample(size_t least, size_t most) const;

 private:
  friend class PatternReader;

  struct Range {
    uint32_t first;
    uint32_t last;
  };
  // Of characters. What is unclear is taken, whether the set is turned around or not.
  struct Set {
    std::vector<Range> ranges;
    bool isNegative = false;
    bool takesAllBeyondAscii = false;
    std::vector<Set> without;

    bool has(uint32_t c) const;
  };
  struct State {
    enum class Kind : uint8_t { set, split, accept } kind = Kind::accept;
    uint32_t set = 0;
    uint32_t next = 0;
    uint32_t other = 0;
  };

  void follow(uint32_t state, std::vector<uint32_t>& states, std::vector<bool>& seen) const;
  uint32_t exampleOf(const Set& set) const;

  std::vector<Set> sets_;
  std::vector<State> states_;
  uint32_t start_ = 0;
};

}  // namespace ztservice::call
