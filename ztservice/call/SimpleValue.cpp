#include "ztservice/call/SimpleValue.h"

#include <algorithm>
#include <charconv>

#include "ztservice/call/Lexical.h"

namespace ztservice::call {

namespace {

// Types that name each other may do so without end.
constexpr size_t deepest = 50;
constexpr size_t mostShown = 60;

std::string shown(std::string_view text) {
  if (text.size() <= mostShown) return '"' + std::string(text) + '"';
  size_t end = mostShown;
  while ((static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return '"' + std::string(text.substr(0, end)) + "…\"";
}

size_t sizeOf(std::string_view number) {
  size_t value = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  return error == std::errc() ? value : SIZE_MAX;
}

std::vector<std::string_view> itemsOf(std::string_view text) {
  std::vector<std::string_view> items;
  while (!text.empty()) {
    const size_t end = std::min(text.find(' '), text.size());
    if (end > 0) items.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return items;
}

std::string counted(size_t count, const char* what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

// What the length facets of all steps allow, in characters, bytes or items.
std::pair<size_t, size_t> lengthsOf(const std::vector<const Type*>& line) {
  constexpr size_t longest = 10'000;  // a longer sample helps nobody
  size_t least = 0, most = SIZE_MAX;
  for (const Type* step : line) {
    for (const Facet& facet : step->facets) {
      const std::string text(facet.value);
      if (facet.name == "length" || facet.name == "minLength") least = std::max(least, sizeOf(text));
      if (facet.name == "length" || facet.name == "maxLength") most = std::min(most, sizeOf(text));
    }
  }
  return {std::min(least, longest), most};
}

std::string bytesOf(std::string_view primitive, size_t count) {
  if (primitive == "hexBinary") return std::string(2 * count, '0');
  std::string text(count / 3 * 4, 'A');
  if (count % 3 == 1) text += "AA==";
  if (count % 3 == 2) text += "AAA=";
  return text;
}

// Numbers right beside a limit that is not a value itself.
std::vector<std::string> neighboursOf(std::string_view limit, std::string_view primitive) {
  double number = 0;
  const auto [end, error] = std::from_chars(limit.data(), limit.data() + limit.size(), number);
  const bool isNumber = primitive == "decimal" || primitive == "double" || primitive == "float";
  if (error != std::errc() || end != limit.data() + limit.size() || !isNumber) return {};
  std::vector<std::string> texts;
  for (const double step : {1.0, 0.5, 0.001}) {
    for (const double one : {number + step, number - step}) {
      char digits[400];
      const auto written = std::to_chars(digits, digits + sizeof digits, one, std::chars_format::fixed);
      if (written.ec == std::errc()) texts.emplace_back(digits, written.ptr);
    }
  }
  return texts;
}

std::string_view nameOf(const Type& type) { return type.name.empty() ? type.primitive : type.name.local; }

}  // namespace

const Type* SimpleValues::typeOf(const TypeReference& reference) {
  if (reference.anonymous) return reference.anonymous;
  if (reference.name.empty()) return nullptr;
  const char* const local = reference.name.local.data();
  const char* const space = reference.name.space.data();
  Known& known = known_[reinterpret_cast<uintptr_t>(local) / alignof(std::max_align_t) % known_.size()];
  if (known.local != local || known.space != space || !known.type)
    known = {local, space, service_.type(reference.name)};
  return known.type;
}

const SimpleValues::Facts& SimpleValues::factsOf(const Type& type) {
  const auto [found, isNew] = facts_.try_emplace(&type);
  Facts& facts = found->second;
  if (!isNew) return facts;
  facts.line = lineOf(type);
  facts.whiteSpace = whiteSpaceOf(facts.line);
  facts.hasFacets = std::any_of(facts.line.begin(), facts.line.end(), [](const Type* step) {
    return !step->facets.empty() || !step->values.empty();
  });
  facts.isAnyText = !facts.hasFacets && type.variety == Type::Variety::atomic && type.primitive == "string" &&
                    facts.line.back()->name.local == "string";
  return facts;
}

bool SimpleValues::isSimple(const Type& type) {
  return type.kind == Type::Kind::atomic || type.kind == Type::Kind::simple ||
         type.kind == Type::Kind::enumeration;
}

std::vector<const Type*> SimpleValues::lineOf(const Type& type) const {
  std::vector<const Type*> line;
  for (const Type* at = &type; at && line.size() < 1000;) {
    line.push_back(at);
    at = at->anonymousBase ? at->anonymousBase : at->base.empty() ? nullptr : service_.type(at->base);
    if (at && !isSimple(*at)) break;
  }
  return line;
}

std::string_view SimpleValues::whiteSpaceOf(const std::vector<const Type*>& line) {
  for (const Type* step : line) {
    if (step->variety == Type::Variety::list) return "collapse";
    for (const Facet& facet : step->facets) {
      if (facet.name == "whiteSpace") return facet.value;
    }
  }
  const Type& last = *line.back();
  return lexical::whiteSpaceOf(last.name.local, last.primitive);
}

const Pattern* SimpleValues::pattern(std::string_view expression) {
  const auto [found, isNew] = patterns_.try_emplace(expression);
  if (isNew) found->second = Pattern::compile(expression);
  return found->second ? &*found->second : nullptr;
}

std::string SimpleValues::faultOf(const Type& type, std::string_view text) { return faultOf(type, text, 0); }

std::string SimpleValues::faultOf(const Type& type, std::string_view text, size_t depth) {
  if (!type.error.empty() || depth > deepest) return {};
  const Facts& facts = factsOf(type);
  if (facts.isAnyText) return {};
  const std::vector<const Type*>& line = facts.line;
  const std::string value = lexical::normalized(text, facts.whiteSpace);
  if (type.variety == Type::Variety::unionOf) {
    std::string fault = faultInUnion(type, text, depth);
    if (!fault.empty()) return fault;
  } else if (type.variety == Type::Variety::list) {
    const Type* item = type.item ? typeOf(*type.item) : nullptr;
    for (const std::string_view one : itemsOf(value)) {
      std::string fault = item ? faultOf(*item, one, depth + 1) : std::string();
      if (!fault.empty()) return fault;
    }
  } else {
    const Type& last = *line.back();
    if (!lexical::isOf(last.name.local, type.primitive, value)) {
      const lexical::Range range = lexical::rangeOf(last.name.local);
      const bool isBeyond = type.primitive == "decimal" && lexical::isOf("integer", "decimal", value);
      if (isBeyond && !range.least.empty() && lexical::compare("decimal", value, range.least) < 0)
        return value + " is less than " + std::string(range.least);
      if (isBeyond && !range.most.empty() && lexical::compare("decimal", value, range.most) > 0)
        return value + " is more than " + std::string(range.most);
      return shown(value) + " is no " + std::string(nameOf(last));
    }
  }
  if (!facts.hasFacets) return {};
  for (const Type* step : line) {
    std::string fault = faultOfFacets(*step, type, value);
    if (!fault.empty()) return fault;
  }
  return {};
}

std::string SimpleValues::faultInUnion(const Type& type, std::string_view text, size_t depth) {
  std::string first;
  for (const TypeReference& reference : type.memberTypes) {
    const Type* member = typeOf(reference);
    if (!member) return {};
    const std::string fault = faultOf(*member, text, depth + 1);
    if (fault.empty()) return {};
    if (first.empty()) first = fault;
  }
  return type.memberTypes.size() == 1 ? first : shown(text) + " is of none of the types of the union";
}

// Of one step: one of its patterns and one of its values must be met, and each other facet.
std::string SimpleValues::faultOfFacets(const Type& step, const Type& type, const std::string& text) {
  bool hasPattern = false, meetsOne = false;
  std::string_view last;
  for (const Facet& facet : step.facets) {
    if (facet.name == "pattern") {
      const Pattern* expression = pattern(facet.value);
      hasPattern = true;
      meetsOne = meetsOne || !expression || expression->matches(text);
      last = facet.value;
      continue;
    }
    std::string fault = faultOfFacet(facet, type, text);
    if (!fault.empty()) return fault;
  }
  if (hasPattern && !meetsOne) return shown(text) + " does not match the pattern " + std::string(last);
  if (!step.values.empty() && !isOneOf(step, type, text)) {
    std::string fault = shown(text) + " is none of";
    constexpr size_t most = 12;
    for (size_t i = 0; i < std::min(step.values.size(), most); ++i)
      fault += (i ? ", " : " ") + std::string(step.values[i]);
    return step.values.size() > most ? fault + " …" : fault;
  }
  return {};
}

bool SimpleValues::isOneOf(const Type& step, const Type& type, const std::string& text) {
  const std::string_view whiteSpace = factsOf(type).whiteSpace;
  const auto is = [&](std::string_view value) {
    const std::string one = lexical::normalized(value, whiteSpace);
    if (one == text) return true;
    if (type.variety != Type::Variety::atomic) return false;
    return lexical::compare(type.primitive, one, text) == 0;
  };
  return std::any_of(step.values.begin(), step.values.end(), is);
}

std::string SimpleValues::faultOfFacet(const Facet& facet, const Type& type, const std::string& text) const {
  const std::string limit(facet.value);
  if (facet.name == "totalDigits" || facet.name == "fractionDigits") {
    const bool isTotal = facet.name == "totalDigits";
    const size_t count = isTotal ? lexical::totalDigits(text) : lexical::fractionDigits(text);
    if (type.primitive != "decimal" || count <= sizeOf(limit)) return {};
    return text + " has " + counted(count, isTotal ? "digit" : "fraction digit") + ", " + limit + " allowed";
  }
  if (facet.name == "length" || facet.name == "minLength" || facet.name == "maxLength") {
    const bool isList = type.variety == Type::Variety::list;
    if (!isList && (type.primitive == "QName" || type.primitive == "NOTATION")) return {};
    const size_t length = isList ? itemsOf(text).size() : lexical::lengthOf(type.primitive, text);
    const size_t allowed = sizeOf(limit);
    if (facet.name != "maxLength" ? length < allowed : false)
      return shown(text) + " has the length " + std::to_string(length) + ", " +
             (facet.name == "length" ? "" : "at least ") + limit + " wanted";
    if (facet.name != "minLength" ? length > allowed : false)
      return shown(text) + " has the length " + std::to_string(length) + ", " + limit + " allowed";
    return {};
  }
  const bool isLeast = facet.name == "minInclusive" || facet.name == "minExclusive";
  if (!isLeast && facet.name != "maxInclusive" && facet.name != "maxExclusive") return {};
  const std::partial_ordering order =
      lexical::compare(type.primitive, text, lexical::normalized(facet.value, "collapse"));
  if (order == std::partial_ordering::unordered && text != "NaN") return {};
  const bool mayEqual = facet.name.ends_with("Inclusive");
  if (order == 0 ? mayEqual : isLeast ? order > 0 : order < 0) return {};
  const std::string comparison =
      isLeast ? (mayEqual ? "less than " : "not more than ") : (mayEqual ? "more than " : "not less than ");
  return text + " is " + comparison + limit;
}

std::string SimpleValues::sampleOf(const Type& type) { return sampleOf(type, 0); }

std::string SimpleValues::sampleOf(const Type& type, size_t depth) {
  if (depth > deepest) return {};
  const std::vector<const Type*> line = lineOf(type);
  std::vector<std::string> candidates;
  for (const Type* step : line) candidates.insert(candidates.end(), step->values.begin(), step->values.end());
  if (type.variety == Type::Variety::unionOf) {
    for (const TypeReference& reference : type.memberTypes) {
      if (const Type* member = typeOf(reference)) candidates.push_back(sampleOf(*member, depth + 1));
    }
  } else if (type.variety == Type::Variety::list) {
    const Type* item = type.item ? typeOf(*type.item) : nullptr;
    const std::string one = item ? sampleOf(*item, depth + 1) : "text";
    std::string text = one;
    for (size_t count = 1; count < lengthsOf(line).first; ++count) text += ' ' + one;
    candidates.push_back(std::move(text));
  } else {
    for (std::string& text : candidatesFor(type, line)) candidates.push_back(std::move(text));
  }
  for (const std::string& text : candidates) {
    if (faultOf(type, text).empty()) return text;
  }
  return candidates.empty() ? std::string() : candidates.front();
}

// Texts that are likely to meet the facets, the plainest first.
std::vector<std::string> SimpleValues::candidatesFor(const Type& type, const std::vector<const Type*>& line) {
  std::vector<std::string> texts{std::string(lexical::exampleOf(line.back()->name.local, type.primitive))};
  const auto [least, most] = lengthsOf(line);
  const bool isText =
      type.primitive == "string" || type.primitive == "anyURI" || type.primitive == "anySimpleType";
  if (isText && texts[0].size() > most) texts.push_back(texts[0].substr(0, most));
  if (isText && texts[0].size() < least)
    texts.push_back(texts[0] + std::string(least - texts[0].size(), 'x'));
  if (type.primitive == "hexBinary" || type.primitive == "base64Binary")
    texts.push_back(bytesOf(type.primitive, least));
  for (const Type* step : line) {
    for (const Facet& facet : step->facets) {
      if (facet.name == "pattern") {
        const Pattern* expression = pattern(facet.value);
        std::optional<std::string> text = expression ? expression->sample(least, most) : std::nullopt;
        if (text) texts.push_back(std::move(*text));
      } else if (facet.name.ends_with("Inclusive")) {
        texts.push_back(lexical::normalized(facet.value, "collapse"));
      } else if (facet.name.ends_with("Exclusive")) {
        for (std::string& text : neighboursOf(facet.value, type.primitive)) texts.push_back(std::move(text));
      }
    }
  }
  if (type.primitive == "decimal") texts.insert(texts.end(), {"0", "-1"});
  return texts;
}

}  // namespace ztservice::call
