#include "ztservice/call/Content.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <set>

#include "ztservice/call/Nearest.h"
#include "ztservice/schema/Builtins.h"

namespace ztservice::call {

namespace {

std::string counted(uint64_t count, const char* verb) { return std::to_string(count) + ' ' + verb; }

}  // namespace

bool Content::means(std::string_view key, const Name& name) {
  if (!key.starts_with('{')) return key == name.local;
  const size_t end = key.find('}');
  return end != std::string_view::npos && key.substr(1, end - 1) == name.space &&
         key.substr(end + 1) == name.local;
}

std::vector<std::pair<unsigned, unsigned>> Content::stepsOf(std::string_view path) {
  std::vector<std::pair<unsigned, unsigned>> steps;
  const char* at = path.data();
  const char* const end = at + path.size();
  while (at < end) {
    std::pair<unsigned, unsigned> step;
    at = std::from_chars(at, end, step.first).ptr;
    if (at < end) at = std::from_chars(at + 1, end, step.second).ptr;
    if (at < end) ++at;
    steps.push_back(step);
  }
  return steps;
}

Content::Content(const Service& service, const Type& type, const Value& object, const std::string& path,
                 Findings& findings)
    : service_(service), type_(type), object_(object), path_(path), findings_(findings) {
  readType();
  readObject();
  settleChoices();
  for (const Given& given : given_) distribute(given);
  fillIn();
  std::vector<Range> shares;
  for (const Slot& slot : slots_) shares.push_back({0, slot.placed.size()});
  write(0, slots_.size(), 0, shares, 0);
  placed_.insert(placed_.end(), rest_.begin(), rest_.end());
}

std::string Content::join(std::string_view step) const {
  std::string text = path_;
  if (!text.empty() && !step.starts_with('[')) text += '.';
  return text.append(step);
}

void Content::readType() {
  for (const Member& member : type_.members) {
    Slot& slot = slots_.emplace_back();
    slot.member = &member;
    slot.path = stepsOf(member.choice);
    slot.least = member.min;
  }
}

std::vector<Content::Candidate> Content::candidatesOf(std::string_view key) const {
  std::vector<Candidate> candidates;
  for (size_t i = 0; i < slots_.size(); ++i) {
    const Member& member = *slots_[i].member;
    if (member.any) continue;
    if (means(key, member.name)) {
      candidates.push_back({i, nullptr});
      continue;
    }
    const Element* head = member.isReference ? service_.element(member.name) : nullptr;
    if (!head) continue;
    for (const Name& substitute : head->substitutes) {
      const Element* standIn = means(key, substitute) ? service_.element(substitute) : nullptr;
      if (!standIn) continue;
      candidates.push_back({i, standIn});
      break;
    }
  }
  return candidates;
}

// A list is the value of an array or of a list type where only one can stand.
bool Content::takesListAsOne(const Given& given) const {
  return std::all_of(given.candidates.begin(), given.candidates.end(), [this](const Candidate& candidate) {
    const Member& member = *slots_[candidate.slot].member;
    const Element* element = candidate.standIn    ? candidate.standIn
                             : member.isReference ? service_.element(member.name)
                                                  : nullptr;
    const TypeReference& reference = element ? element->type : member.type;
    const Type* type = reference.anonymous ? reference.anonymous : service_.type(reference.name);
    return type && member.max == 1 &&
           (type->kind == Type::Kind::array || type->variety == Type::Variety::list);
  });
}

void Content::readObject() {
  for (const auto& [key, value] : object_.object()) {
    if (key.starts_with('@') || (key.starts_with('$') && key != "$any")) continue;
    Given& given = given_.emplace_back();
    given.key = key;
    given.value = &value;
    given.candidates = candidatesOf(key);
    given.isOne = value.kind() != Value::Kind::list || (!given.candidates.empty() && takesListAsOne(given));
    given.count = given.isOne ? 1 : value.list().size();
  }
}

// Of each choice whether it has an alternative without anything that must be there.
std::vector<bool> Content::emptiableChoices(unsigned last) const {
  // What the alternatives need, the choices inside first: they open later.
  std::vector<std::map<unsigned, bool>> needs(last + 1);
  std::vector<std::vector<std::pair<size_t, size_t>>> steps(last + 1);
  for (size_t i = 0; i < slots_.size(); ++i) {
    for (size_t k = 0; k < slots_[i].path.size(); ++k) steps[slots_[i].path[k].first].push_back({i, k});
  }
  std::vector<bool> mayBeEmpty(last + 1);
  for (unsigned choice = last; choice > 0; --choice) {
    for (const auto& [i, k] : steps[choice]) {
      const Slot& slot = slots_[i];
      const bool isInner = k + 1 < slot.path.size();
      const bool isNeeded = isInner ? !mayBeEmpty[slot.path[k + 1].first] : slot.member->min > 0;
      bool& isAlternative = needs[choice][slot.path[k].second];
      isAlternative = isAlternative || isNeeded;
    }
    // A number that is left out is an alternative without content.
    const auto& alternatives = needs[choice];
    mayBeEmpty[choice] =
        alternatives.empty() || alternatives.rbegin()->first > alternatives.size() ||
        std::any_of(alternatives.begin(), alternatives.end(), [](const auto& one) { return !one.second; });
  }
  return mayBeEmpty;
}

void Content::settleChoices() {
  std::set<unsigned> choices;
  for (const Slot& slot : slots_) {
    for (const auto& step : slot.path) choices.insert(step.first);
  }
  if (choices.empty()) return;
  const std::vector<bool> mayBeEmpty = emptiableChoices(*choices.rbegin());
  for (const unsigned choice : choices) settleChoice(choice, mayBeEmpty[choice]);
}

bool Content::isGiven(size_t slot) const {
  return std::any_of(given_.begin(), given_.end(), [slot](const Given& given) {
    return given.count > 0 && std::any_of(given.candidates.begin(), given.candidates.end(),
                                          [slot](const Candidate& one) { return one.slot == slot; });
  });
}

void Content::settleChoice(unsigned choice, bool mayBeEmpty) {
  struct Alternative {
    std::set<std::string_view> covered;
    size_t missing = 0;
  };
  std::map<unsigned, Alternative> alternatives;
  std::vector<std::pair<size_t, unsigned>> inside;
  bool repeats = false, isAnyGiven = false;
  for (size_t i = 0; i < slots_.size(); ++i) {
    const Slot& slot = slots_[i];
    const auto step = std::find_if(slot.path.begin(), slot.path.end(),
                                   [choice](const auto& one) { return one.first == choice; });
    if (step == slot.path.end() || slot.isLeftOut) continue;
    inside.push_back({i, step->second});
    repeats = repeats || slot.member->group > 0;
    Alternative& alternative = alternatives[step->second];
    if (isGiven(i))
      isAnyGiven = true;
    else if (slot.member->min > 0)
      ++alternative.missing;
  }
  if (inside.empty()) return;
  for (const Given& given : given_) {
    if (given.count == 0) continue;
    for (const Candidate& candidate : given.candidates) {
      const auto in = std::find_if(inside.begin(), inside.end(),
                                   [&](const auto& one) { return one.first == candidate.slot; });
      if (in != inside.end()) alternatives[in->second].covered.insert(given.key);
    }
  }
  const bool hasWildcard = std::any_of(inside.begin(), inside.end(),
                                       [this](const auto& one) { return slots_[one.first].member->any; });
  if (!isAnyGiven) {
    if (!mayBeEmpty && !hasWildcard) {
      std::string names;
      for (const auto& [i, alternative] : inside)
        names.append(names.empty() ? "" : ", ").append(slots_[i].member->name.local);
      findings_.add(path_, "one of " + names + " is missing");
    }
    for (const auto& [i, alternative] : inside) {
      slots_[i].least = 0;
      slots_[i].isLeftOut = !slots_[i].member->any;
    }
    return;
  }
  if (repeats) {
    for (const auto& [i, alternative] : inside) slots_[i].least = 0;
    return;
  }
  const auto best =
      std::max_element(alternatives.begin(), alternatives.end(), [](const auto& a, const auto& b) {
        if (a.second.covered.size() != b.second.covered.size())
          return a.second.covered.size() < b.second.covered.size();
        return a.second.missing > b.second.missing;
      });
  for (const auto& [i, alternative] : inside) {
    if (alternative == best->first) continue;
    slots_[i].isLeftOut = true;
    slots_[i].least = 0;
    slots_[i].instead = *best->second.covered.begin();
  }
}

// What several members of one name can take goes to each as often as it must, then to the first that can
// take more.
void Content::distribute(const Given& given) {
  if (given.count == 0) return;
  std::vector<size_t> counts(given.candidates.size());
  size_t left = given.count;
  for (const bool isNeed : {true, false}) {
    for (size_t k = 0; k < counts.size(); ++k) {
      const Slot& slot = slots_[given.candidates[k].slot];
      if (slot.isLeftOut) continue;
      const uint64_t most = isNeed ? slot.least : slot.member->max;
      const uint64_t has = slot.placed.size() + counts[k];
      const size_t more = most > has ? static_cast<size_t>(std::min<uint64_t>(most - has, left)) : 0;
      counts[k] += more;
      left -= more;
    }
  }
  size_t next = 0;
  for (size_t k = 0; k < counts.size(); ++k) {
    Slot& slot = slots_[given.candidates[k].slot];
    for (size_t i = 0; i < counts[k]; ++i, ++next)
      slot.placed.push_back({slot.member, given.candidates[k].standIn, &given.at(next), stepOf(given, next)});
  }
  if (left == 0) return;
  if (left < given.count) {
    findings_.add(join(given.key), counted(given.count, "given, ") + counted(given.count - left, "allowed"));
    const Candidate& last = given.candidates.back();
    for (; next < given.count; ++next)
      slots_[last.slot].placed.push_back(
          {slots_[last.slot].member, last.standIn, &given.at(next), stepOf(given, next)});
    return;
  }
  complainOfNone(given);
}

std::string Content::stepOf(const Given& given, size_t i) {
  std::string text(given.key);
  return given.isOne ? text : text + '[' + std::to_string(i) + ']';
}

void Content::keepAll(const Given& given, const Member* member) {
  for (size_t i = 0; i < given.count; ++i) rest_.push_back({member, nullptr, &given.at(i), stepOf(given, i)});
}

void Content::complainOfNone(const Given& given) {
  for (const Candidate& candidate : given.candidates) {
    const Slot& slot = slots_[candidate.slot];
    if (slot.isLeftOut && !slot.instead.empty()) {
      findings_.add(join(given.key),
                    "does not go with " + slot.instead + ", which is of another alternative");
      keepAll(given, slot.member);
      return;
    }
  }
  if (!given.candidates.empty()) {
    findings_.add(join(given.key), counted(given.count, "given, 0 allowed"));
    keepAll(given, slots_[given.candidates.front().slot].member);
    return;
  }
  const auto wildcard =
      std::find_if(slots_.begin(), slots_.end(), [](const Slot& slot) { return slot.member->any; });
  const bool isFree = schema::isAnyType(type_);
  if (wildcard != slots_.end() && (isFree || given.key == "$any" || given.key.starts_with('{'))) {
    letIn(given, static_cast<size_t>(wildcard - slots_.begin()));
    return;
  }
  if (given.key == "$any") {
    findings_.add(join(given.key), "there is no wildcard");
    return;
  }
  std::vector<std::string> names;
  for (const Slot& slot : slots_) {
    if (!slot.member->any) names.emplace_back(slot.member->name.local);
  }
  findings_.add(join(given.key), "there is no such member" + suggestion(std::string(given.key), names));
  keepAll(given, nullptr);
}

void Content::letIn(const Given& given, size_t wildcard) {
  const Element* element = nullptr;
  if (given.key.starts_with('{') && given.key.find('}') != std::string_view::npos) {
    const size_t end = given.key.find('}');
    element = service_.element({given.key.substr(1, end - 1), given.key.substr(end + 1)});
  }
  Slot& slot = slots_[wildcard];
  for (size_t i = 0; i < given.count; ++i)
    slot.placed.push_back({nullptr, element, &given.at(i), stepOf(given, i)});
  if (slot.placed.size() > slot.member->max)
    findings_.add(join(given.key),
                  counted(slot.placed.size(), "given, ") + counted(slot.member->max, "allowed"));
}

void Content::fillIn() {
  constexpr uint64_t mostFilled = 100;
  for (Slot& slot : slots_) {
    const uint64_t has = slot.placed.size();
    if (slot.isLeftOut || has >= slot.least) continue;
    const Member& member = *slot.member;
    const std::string name = member.any ? "$any" : std::string(member.name.local);
    if (!member.error.empty()) {
      findings_.add(join(name), "is missing, and not known: " + std::string(member.error));
    } else if ((member.defaultValue || member.fixedValue) && slot.least - has <= mostFilled) {
      slot.placed.resize(slot.least, {&member, nullptr, nullptr, name});
    } else if (has == 0) {
      findings_.add(join(name), "is missing");
    } else {
      findings_.add(join(name), counted(has, "given, at least ") + counted(slot.least, "wanted"));
    }
  }
}

// The end of the members that repeat together, with all that stands between them.
size_t Content::endOfGroup(size_t from, size_t to) const {
  const unsigned group = slots_[from].member->group;
  for (size_t end = to; end > from; --end) {
    if (slots_[end - 1].member->group == group) return end;
  }
  return from + 1;
}

// How often a group comes: as often as what must be in each round allows, or as the most frequent needs.
size_t Content::rounds(const std::vector<Slot>& slots, size_t from, size_t to, unsigned group,
                       const std::vector<Range>& shares) {
  size_t least = SIZE_MAX, most = 0;
  for (size_t i = from; i < to; ++i) {
    const size_t count = shares[i].to - shares[i].from;
    most = std::max(most, count);
    const bool isNeeded = slots[i].member->group == group && slots[i].least > 0 && count > 0;
    if (isNeeded) least = std::min(least, count);
  }
  return least == SIZE_MAX ? most : least;
}

void Content::write(size_t from, size_t to, unsigned group, std::vector<Range>& shares, size_t depth) {
  constexpr size_t deepest = 50;
  for (size_t i = from; i < to;) {
    const unsigned own = slots_[i].member->group;
    if (own == group || depth == deepest) {
      for (size_t k = shares[i].from; k < shares[i].to; ++k)
        placed_.push_back(std::move(slots_[i].placed[k]));
      ++i;
      continue;
    }
    const size_t end = endOfGroup(i, to);
    const std::vector<Range> all(shares.begin() + static_cast<ptrdiff_t>(i),
                                 shares.begin() + static_cast<ptrdiff_t>(end));
    const size_t count = rounds(slots_, i, end, own, shares);
    for (size_t round = 0; round < count; ++round) {
      for (size_t k = i; k < end; ++k) {
        // What there is less of comes in the first rounds.
        const Range& whole = all[k - i];
        const size_t has = whole.to - whole.from;
        const size_t each = has / count, more = has % count;
        shares[k].from = whole.from + round * each + std::min(round, more);
        shares[k].to = shares[k].from + each + (round < more ? 1 : 0);
      }
      write(i, end, own, shares, depth + 1);
    }
    i = end;
  }
}

}  // namespace ztservice::call
