#include "ztservice/call/Pattern.h"

#include <algorithm>
#include <limits>
#include <queue>
#include <set>

#include "ztservice/call/Lexical.h"

namespace ztservice::call {

namespace {

constexpr size_t mostStates = 20'000;
constexpr size_t deepestNesting = 100;
constexpr size_t longestExpression = 10'000;
constexpr uint32_t lastCharacter = 0x10FFFF;
constexpr size_t unbounded = std::numeric_limits<size_t>::max();

void append(std::string& text, uint32_t c) {
  if (c < 0x80) {
    text += static_cast<char>(c);
  } else if (c < 0x800) {
    text += {static_cast<char>(0xC0 | c >> 6), static_cast<char>(0x80 | (c & 0x3F))};
  } else if (c < 0x10000) {
    text += {static_cast<char>(0xE0 | c >> 12), static_cast<char>(0x80 | (c >> 6 & 0x3F)),
             static_cast<char>(0x80 | (c & 0x3F))};
  } else {
    text += {static_cast<char>(0xF0 | c >> 18), static_cast<char>(0x80 | (c >> 12 & 0x3F)),
             static_cast<char>(0x80 | (c >> 6 & 0x3F)), static_cast<char>(0x80 | (c & 0x3F))};
  }
}

// The ASCII characters of a general category or of its group; empty for a name of none.
std::optional<std::string_view> asciiOf(std::string_view category) {
  static constexpr std::pair<std::string_view, std::string_view> categories[] = {
      {"Lu", "ABCDEFGHIJKLMNOPQRSTUVWXYZ"},
      {"Ll", "abcdefghijklmnopqrstuvwxyz"},
      {"L", "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"},
      {"Nd", "0123456789"},
      {"N", "0123456789"},
      {"Pc", "_"},
      {"Pd", "-"},
      {"Ps", "([{"},
      {"Pe", ")]}"},
      {"Po", "!\"#%&'*,./:;?@\\"},
      {"P", "_-([{)]}!\"#%&'*,./:;?@\\"},
      {"Sm", "+<=>|~"},
      {"Sc", "$"},
      {"Sk", "^`"},
      {"S", "+<=>|~$^`"},
      {"Zs", " "},
      {"Z", " "},
  };
  for (const auto& [name, characters] : categories) {
    if (name == category) return characters;
  }
  static constexpr std::string_view others[] = {"Lt", "Lm", "Lo", "M",  "Mn", "Mc", "Me", "Nl", "No",
                                                "Pi", "Pf", "So", "Zl", "Zp", "Cf", "Co", "Cn"};
  if (std::find(std::begin(others), std::end(others), category) != std::end(others)) return "";
  return {};
}

}  // namespace

bool Pattern::Set::has(uint32_t c) const {
  const auto holds = [&](const Range& range) { return c >= range.first && c <= range.last; };
  const bool isIn = std::any_of(ranges.begin(), ranges.end(), holds);
  const bool isUnclear = takesAllBeyondAscii && c >= 0x80;
  if (!isUnclear && isIn == isNegative) return false;
  const auto takesAway = [&](const Set& set) {
    return set.has(c) && !(set.takesAllBeyondAscii && c >= 0x80);
  };
  return std::none_of(without.begin(), without.end(), takesAway);
}

// Reads an expression into states: a piece is built from its end, with what follows it known.
class PatternReader {
 public:
  explicit PatternReader(std::string_view expression) : text_(expression) {}

  std::optional<Pattern> read() {
    if (text_.size() > longestExpression) return {};
    const uint32_t accept = add({});
    std::optional<uint32_t> start = alternatives(accept, 0);
    if (!start || at_ != text_.size() || isTooLarge()) return {};
    pattern_.start_ = *start;
    return std::move(pattern_);
  }

 private:
  using Set = Pattern::Set;
  using State = Pattern::State;
  // An atom lies between two places of the text and is read again for each time that it may come.
  struct Piece {
    size_t begin;
    size_t least = 1;
    size_t most = 1;
  };

  bool isOver() const { return at_ == text_.size(); }
  char peek() const { return isOver() ? '\0' : text_[at_]; }
  bool take(char c) {
    if (isOver() || text_[at_] != c) return false;
    ++at_;
    return true;
  }
  bool isTooLarge() const { return pattern_.states_.size() > mostStates; }

  uint32_t add(const State& state) {
    pattern_.states_.push_back(state);
    return static_cast<uint32_t>(pattern_.states_.size() - 1);
  }
  uint32_t split(uint32_t one, uint32_t other) { return add({State::Kind::split, 0, one, other}); }

  // branch ('|' branch)*
  std::optional<uint32_t> alternatives(uint32_t next, size_t depth) {
    std::optional<uint32_t> start = branch(next, depth);
    while (start && take('|')) {
      const std::optional<uint32_t> other = branch(next, depth);
      if (!other) return {};
      start = split(*start, *other);
    }
    return start;
  }

  // Finds the pieces first, then makes their states from the last one to the first.
  std::optional<uint32_t> branch(uint32_t next, size_t depth) {
    std::vector<Piece> pieces;
    while (!isOver() && peek() != '|' && peek() != ')') {
      Piece piece{at_};
      if (!skipAtom(depth) || !quantifier(piece)) return {};
      pieces.push_back(piece);
    }
    const size_t end = at_;
    std::optional<uint32_t> start = next;
    for (auto piece = pieces.rbegin(); start && piece != pieces.rend(); ++piece)
      start = repeated(*piece, *start, depth);
    at_ = end;
    return start;
  }

  std::optional<uint32_t> repeated(const Piece& piece, uint32_t next, size_t depth) {
    std::optional<uint32_t> start = next;
    if (piece.most == unbounded) {
      const uint32_t loop = split(next, next);
      const std::optional<uint32_t> body = atomAt(piece.begin, loop, depth);
      if (!body) return {};
      pattern_.states_[loop].next = *body;
      start = loop;
    } else {
      for (size_t i = piece.least; start && i < piece.most; ++i) {
        const std::optional<uint32_t> body = atomAt(piece.begin, *start, depth);
        if (!body) return {};
        start = split(*body, next);
      }
    }
    for (size_t i = 0; start && i < piece.least; ++i) start = atomAt(piece.begin, *start, depth);
    return start;
  }

  std::optional<uint32_t> atomAt(size_t begin, uint32_t next, size_t depth) {
    if (isTooLarge() || ++atoms_ > mostStates) return {};
    at_ = begin;
    if (take('(')) {
      const std::optional<uint32_t> start = alternatives(next, depth + 1);
      return start && take(')') ? start : std::nullopt;
    }
    std::optional<Set> set = oneCharacter();
    if (!set) return {};
    pattern_.sets_.push_back(std::move(*set));
    return add({State::Kind::set, static_cast<uint32_t>(pattern_.sets_.size() - 1), next, 0});
  }

  // Goes behind an atom without making states; false for what is none.
  bool skipAtom(size_t depth) {
    if (peek() != '(') return oneCharacter().has_value();
    for (size_t open = 0; !isOver();) {
      if (take('(')) {
        if (++open + depth > deepestNesting) return false;
      } else if (take(')')) {
        if (--open == 0) return true;
      } else if (!take('|') && !takeQuantifierMark() && !oneCharacter()) {
        return false;
      }
    }
    return false;
  }
  bool takeQuantifierMark() {
    Piece piece{at_};
    const size_t before = at_;
    return quantifier(piece) && at_ != before;
  }

  bool quantifier(Piece& piece) {
    if (take('?')) {
      piece.least = 0;
    } else if (take('*')) {
      piece.least = 0;
      piece.most = unbounded;
    } else if (take('+')) {
      piece.most = unbounded;
    } else if (take('{')) {
      if (!count(piece.least)) return false;
      piece.most = piece.least;
      if (take(',') && !(peek() == '}' ? (piece.most = unbounded, true) : count(piece.most))) return false;
      return take('}') && piece.least <= piece.most;
    }
    return true;
  }
  bool count(size_t& value) {
    const size_t begin = at_;
    for (value = 0; peek() >= '0' && peek() <= '9' && value <= mostStates; ++at_)
      value = value * 10 + static_cast<size_t>(peek() - '0');
    return at_ > begin && value <= mostStates;
  }

  std::optional<Set> oneCharacter() {
    if (take('[')) return characterClass(0);
    if (take('.')) return Set{{{'\n', '\n'}, {'\r', '\r'}}, true, false, {}};
    if (take('\\')) return escape();
    if (isOver() || std::string_view("?*+{}()|]").find(peek()) != std::string_view::npos) return {};
    const uint32_t c = lexical::nextCharacter(text_, at_);
    return Set{{{c, c}}, false, false, {}};
  }

  static Set of(std::string_view characters, bool isNegative, bool takesAllBeyondAscii) {
    Set set{{}, isNegative, takesAllBeyondAscii, {}};
    for (const char c : characters)
      set.ranges.push_back({static_cast<uint32_t>(c), static_cast<uint32_t>(c)});
    return set;
  }

  // Behind a backslash.
  std::optional<Set> escape() {
    if (isOver()) return {};
    const char c = text_[at_++];
    switch (c) {
      case 'n':
        return of("\n", false, false);
      case 'r':
        return of("\r", false, false);
      case 't':
        return of("\t", false, false);
      case 's':
      case 'S':
        return of(" \t\n\r", c == 'S', false);
      case 'd':
      case 'D':
        return of("0123456789", c == 'D', true);
      case 'w':
      case 'W': {
        Set set = of(*asciiOf("P"), c == 'w', true);
        set.ranges.push_back({0, ' '});
        set.ranges.push_back({0x7F, 0x7F});
        return set;
      }
      case 'i':
      case 'I': {
        static const Set starts = names(&lexical::isNameStart);
        return turned(starts, c == 'I');
      }
      case 'c':
      case 'C': {
        static const Set characters = names(&lexical::isNameCharacter);
        return turned(characters, c == 'C');
      }
      case 'p':
      case 'P':
        return property(c == 'P');
      default:
        if (std::string_view("\\|.?*+(){}-[]^$").find(c) == std::string_view::npos) return {};
        return of(std::string_view(&text_[at_ - 1], 1), false, false);
    }
  }

  static Set turned(Set set, bool isNegative) {
    set.isNegative = isNegative;
    return set;
  }

  static Set names(bool (*isOne)(uint32_t)) {
    Set set;
    bool isIn = false;
    for (uint32_t c = 0; c <= lastCharacter + 1; ++c) {
      const bool is = c <= lastCharacter && isOne(c);
      if (is && !isIn) set.ranges.push_back({c, c});
      if (!is && isIn) set.ranges.back().last = c - 1;
      isIn = is;
    }
    return set;
  }

  // {Lu}, {IsBasicLatin}
  std::optional<Set> property(bool isNegative) {
    const size_t end = text_.find('}', at_);
    if (!take('{') || end == text_.npos) return {};
    const std::string_view name = text_.substr(at_, end - at_);
    at_ = end + 1;
    if (name == "IsBasicLatin") return Set{{{0, 0x7F}}, isNegative, false, {}};
    if (name == "IsLatin-1Supplement") return Set{{{0x80, 0xFF}}, isNegative, false, {}};
    if (name.starts_with("Is")) return of("", isNegative, true);
    if (name == "C" || name == "Cc") return Set{{{0, 0x1F}, {0x7F, 0x9F}}, isNegative, name == "C", {}};
    const auto characters = asciiOf(name);
    if (!characters) return {};
    return of(*characters, isNegative, true);
  }

  // Behind its bracket: characters, ranges and escapes, then perhaps "-[…]" of what it has not.
  std::optional<Set> characterClass(size_t depth) {
    if (depth > deepestNesting) return {};
    Set whole;
    const bool isNegative = take('^');
    std::vector<Set> parts;
    for (bool isFirst = true; !take(']'); isFirst = false) {
      if (isOver()) return {};
      if (!isFirst && text_.substr(at_).starts_with("-[")) {
        at_ += 2;
        std::optional<Set> without = characterClass(depth + 1);
        if (!without || !take(']')) return {};
        whole.without.push_back(std::move(*without));
        break;
      }
      std::optional<Set> part = classPart();
      if (!part) return {};
      if (part->isNegative || part->takesAllBeyondAscii)
        parts.push_back(std::move(*part));
      else
        whole.ranges.insert(whole.ranges.end(), part->ranges.begin(), part->ranges.end());
    }
    for (const Set& part : parts) merge(whole, part);
    whole.isNegative = isNegative;
    return whole;
  }

  // One character, a range of two, or an escape of many.
  std::optional<Set> classPart() {
    std::optional<Set> first = classCharacter();
    const bool isOne = first && first->ranges.size() == 1 && !first->isNegative &&
                       !first->takesAllBeyondAscii && first->ranges[0].first == first->ranges[0].last;
    const bool isRange =
        isOne && peek() == '-' && at_ + 1 < text_.size() && text_[at_ + 1] != ']' && text_[at_ + 1] != '[';
    if (!isRange) return first;
    ++at_;
    const std::optional<Set> last = classCharacter();
    if (!last || last->ranges.size() != 1 || last->isNegative || last->takesAllBeyondAscii) return {};
    if (last->ranges[0].last < first->ranges[0].first) return {};
    first->ranges[0].last = last->ranges[0].last;
    return first;
  }
  std::optional<Set> classCharacter() {
    if (take('\\')) return escape();
    if (isOver() || peek() == '[' || peek() == ']') return {};
    const uint32_t c = lexical::nextCharacter(text_, at_);
    return Set{{{c, c}}, false, false, {}};
  }

  // A set that is turned around becomes the ranges between its own.
  static void merge(Set& whole, const Set& part) {
    whole.takesAllBeyondAscii |= part.takesAllBeyondAscii;
    std::vector<Pattern::Range> ranges = part.ranges;
    if (part.isNegative) {
      std::sort(ranges.begin(), ranges.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
      uint32_t from = 0;
      for (const Pattern::Range& range : ranges) {
        if (range.first > from) whole.ranges.push_back({from, range.first - 1});
        from = std::max(from, range.last + 1);
      }
      if (from <= lastCharacter) whole.ranges.push_back({from, lastCharacter});
    } else {
      whole.ranges.insert(whole.ranges.end(), ranges.begin(), ranges.end());
    }
  }

  std::string_view text_;
  size_t at_ = 0;
  size_t atoms_ = 0;  // an atom need not have a state
  Pattern pattern_;
};

std::optional<Pattern> Pattern::compile(std::string_view expression) {
  return PatternReader(expression).read();
}

// All states that are reached without a character.
void Pattern::follow(uint32_t state, std::vector<uint32_t>& states, std::vector<bool>& seen) const {
  std::vector<uint32_t> open{state};
  while (!open.empty()) {
    const uint32_t at = open.back();
    open.pop_back();
    if (seen[at]) continue;
    seen[at] = true;
    const State& one = states_[at];
    if (one.kind == State::Kind::split) {
      open.push_back(one.next);
      open.push_back(one.other);
    } else {
      states.push_back(at);
    }
  }
}

bool Pattern::matches(std::string_view text) const {
  std::vector<uint32_t> states, next;
  std::vector<bool> seen(states_.size());
  follow(start_, states, seen);
  for (size_t at = 0; at < text.size() && !states.empty();) {
    const uint32_t c = lexical::nextCharacter(text, at);
    next.clear();
    std::fill(seen.begin(), seen.end(), false);
    for (const uint32_t state : states) {
      const State& one = states_[state];
      if (one.kind == State::Kind::set && sets_[one.set].has(c)) follow(one.next, next, seen);
    }
    states.swap(next);
  }
  return std::any_of(states.begin(), states.end(),
                     [&](uint32_t state) { return states_[state].kind == State::Kind::accept; });
}

// Letters and digits before anything else.
uint32_t Pattern::exampleOf(const Set& set) const {
  for (const auto& [first, last] :
       {std::pair<uint32_t, uint32_t>{'a', 'z'}, {'A', 'Z'}, {'0', '9'}, {' ', '~'}}) {
    for (uint32_t c = first; c <= last; ++c) {
      if (set.has(c)) return c;
    }
  }
  for (const Range& range : set.ranges) {
    if (set.has(range.first)) return range.first;
  }
  return set.has(0xE9) ? 0xE9 : 0;
}

std::optional<std::string> Pattern::sample(size_t least, size_t most) const {
  constexpr size_t longest = 300;
  // A place is a state after a count of characters, with the place before and the character between.
  struct Place {
    uint32_t state;
    size_t length;
    size_t before;
    uint32_t c;
  };
  std::vector<Place> places;
  std::set<std::pair<size_t, uint32_t>> known;
  const auto reach = [&](uint32_t state, size_t length, size_t before, uint32_t c) {
    std::vector<uint32_t> states;
    std::vector<bool> seen(states_.size());
    follow(state, states, seen);
    for (const uint32_t one : states) {
      if (known.insert({length, one}).second) places.push_back({one, length, before, c});
    }
  };
  reach(start_, 0, unbounded, 0);
  for (size_t i = 0; i < places.size() && places.size() < mostStates; ++i) {
    const Place place = places[i];
    const State& state = states_[place.state];
    if (state.kind == State::Kind::accept) {
      if (place.length < least || place.length > most) continue;
      std::vector<uint32_t> characters;
      for (size_t at = i; places[at].before != unbounded; at = places[at].before)
        characters.push_back(places[at].c);
      std::string text;
      for (auto c = characters.rbegin(); c != characters.rend(); ++c) append(text, *c);
      return text;
    }
    const uint32_t c = exampleOf(sets_[state.set]);
    if (c != 0 && place.length < std::min(most, longest)) reach(state.next, place.length + 1, i, c);
  }
  return {};
}

}  // namespace ztservice::call
