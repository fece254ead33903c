#include "ztservice/call/MessageWriter.h"

#include <algorithm>
#include <array>
#include <set>

#include "ztservice/call/Nearest.h"
#include "ztservice/call/ValueFacts.h"

namespace ztservice::call {

namespace {

bool meansAttribute(std::string_view key, const Name& name) {
  if (!key.starts_with('@')) return false;
  key = attributeKey(key);
  if (name.space == schema::xmlNamespace && key.starts_with("xml:")) return key.substr(4) == name.local;
  return Content::means(key, name);
}

}  // namespace

Declared Declared::of(const Element& element) {
  return {element.name,         element.type,       element.nillable,    element.isAbstract,
          element.defaultValue, element.fixedValue, element.substitutes, element.error};
}

Declared Declared::of(const Member& member, const Service& service) {
  Declared what;
  what.name = member.name;
  what.type = member.type;
  what.nillable = member.nillable;
  what.defaultValue = member.defaultValue;
  what.fixedValue = member.fixedValue;
  what.error = member.error;
  const Element* element = member.isReference ? service.element(member.name) : nullptr;
  if (!element) return what;
  what.type = element->type;
  what.nillable = element->nillable;
  what.isAbstract = element->isAbstract;
  what.substitutes = element->substitutes;
  return what;
}

void MessageWriter::element(const Declared& declared, const Value& value, const std::string& step) {
  const Step inside(*this, step);
  if (inside.isTooDeep()) return;
  Declared what = declared;
  if (!standIn(what, value)) return;
  bool isOther = false;
  const Type* type = typeOf(what, value, isOther);
  if (isNil(value))
    nil(what, type, value);
  else
    filled(what, type, isOther, value);
}

// Of an element's substitutes the one that "$type" means, by its own name or by that of its type. False where
// nothing can be written.
bool MessageWriter::standIn(Declared& what, const Value& value) {
  const Value* given = value.find("$type");
  if (given && given->kind() == Value::Kind::text) {
    for (const Name& name : what.substitutes) {
      const Element* element = service_.element(name);
      const bool isMeant =
          element && (Content::means(given->text(), name) ||
                      (what.isAbstract && Content::means(given->text(), element->type.name)));
      if (!isMeant) continue;
      what = Declared::of(*element);
      break;
    }
  }
  if (!what.isAbstract) return true;
  std::string names;
  for (const Name& name : what.substitutes) {
    const Element* element = service_.element(name);
    if (element && !element->isAbstract) names.append(names.empty() ? "" : ", ").append(name.local);
  }
  complain("is abstract" +
           (names.empty() ? ", and nothing stands in for it" : ": give one of " + names + " in its place"));
  return true;
}

const Type* MessageWriter::typeOf(const Declared& what, const Value& value, bool& isOther) {
  const Type* type = simple_.typeOf(what.type);
  if (!what.error.empty()) complain("is not known: " + std::string(what.error));
  const Value* given = value.find("$type");
  if (given && given->kind() != Value::Kind::text) {
    complain("$type is no text");
  } else if (given && type && !Content::means(given->text(), what.name) &&
             !Content::means(given->text(), type->name)) {
    if (const Type* other = otherType(type, given->text())) {
      isOther = true;
      type = other;
    }
  }
  if (type && type->isAbstract && !given && !what.isAbstract && !isNil(value)) {
    std::string names;
    for (const std::string& name : standInsOf(*type)) names += (names.empty() ? "" : ", ") + name;
    complain("is of an abstract type: give \"$type\"" + (names.empty() ? "" : ", one of " + names));
  }
  return type;
}

std::vector<std::string> MessageWriter::standInsOf(const Type& type) const {
  std::vector<std::string> names;
  for (const Name& name : type.derived) names.emplace_back(name.local);
  return names;
}

// A type that stands in for another one: by its whole name, or the local one alone where the namespace is
// that of the declared type or only one type is meant.
const Type* MessageWriter::otherType(const Type* declared, std::string_view text) {
  const Name name = nameOf(text);
  const Type* found = name.space.empty() ? nullptr : service_.type(name);
  if (!found && name.space.empty()) {
    const Type* near = service_.type({declared->name.space, name.local});
    if (near && isDerived(near, *declared)) found = near;
    for (const Type* one : service_.types()) {
      if (!found && one->name.local == name.local && isDerived(one, *declared)) found = one;
    }
  }
  if (!found) {
    std::vector<std::string> names = standInsOf(*declared);
    for (const Type* one : service_.types()) {
      if (!one->name.empty() && isDerived(one, *declared)) names.emplace_back(one->name.local);
    }
    complain("no type " + std::string(text) + suggestion(std::string(name.local), names));
  } else if (!isDerived(found, *declared)) {
    complain(keyOf(found->name) + " does not come from " + keyOf(declared->name));
  } else if (found->isAbstract) {
    complain(keyOf(found->name) + " is abstract");
  }
  return found;
}

bool MessageWriter::isDerived(const Type* type, const Type& base) const {
  if (schema::isAnyType(base)) return true;
  for (size_t steps = 0; type && steps < 1000; ++steps) {
    if (type == &base || (!type->name.empty() && type->name == base.name)) return true;
    type = type->base.empty() ? nullptr : service_.type(type->base);
  }
  return false;
}

void MessageWriter::nil(const Declared& what, const Type* type, const Value& value) {
  if (!what.nillable && encoding_.empty()) complain("is null, but cannot be nil");
  xml_.begin(what.name);
  xml_.attribute(nilName, "true");
  if (type) attributes(*type, value);
  xml_.end(what.name);
}

void MessageWriter::filled(const Declared& what, const Type* type, bool isOther, const Value& value) {
  xml_.begin(what.name);
  if (type && !type->name.empty() && (isOther || !encoding_.empty()) && type->kind != Type::Kind::array &&
      !schema::isAnyType(*type))
    typeAttribute(*type);
  if (!type)
    untyped(value);
  else
    inside(what, type, value);
  xml_.end(what.name);
}

void MessageWriter::typeAttribute(const Type& type) { xml_.attribute(typeName, xml_.qualified(type.name)); }

void MessageWriter::inside(const Declared& what, const Type* type, const Value& value) {
  if (type->kind == Type::Kind::array) {
    items(*type, value);
    return;
  }
  if (!SimpleValues::isSimple(*type)) {
    if (isList(value)) {
      complain("a list, but it occurs once");
      return;
    }
    attributes(*type, value);
    complex(*type, value);
    return;
  }
  leftOver(*type, value);
  if (enclosed(*type, value)) return;
  const std::string text = textOf(*type, value);
  checkFixed(what, *type, text);
  xml_.text(text);
}

void MessageWriter::checkFixed(const Declared& what, const Type& type, const std::string& text) {
  if (!what.fixedValue || text == *what.fixedValue) return;
  if (type.variety == Type::Variety::atomic && lexical::compare(type.primitive, text, *what.fixedValue) == 0)
    return;
  complain("is fixed as " + std::string(*what.fixedValue));
}

void MessageWriter::content(const TypeReference& reference, const Value& value) {
  const Type* type = simple_.typeOf(reference);
  if (!type)
    untyped(value);
  else
    inside({}, type, value);
}

void MessageWriter::attributes(const Type& type, const Value& value) {
  if (isObject(value)) leftOver(type, value);
  for (const Attribute& attribute : type.attributes) {
    const Value* given = nullptr;
    if (isObject(value)) {
      for (const auto& [key, one] : value.object()) {
        if (meansAttribute(key, attribute.name)) given = &one;
      }
    }
    const Step step(*this, '@' + std::string(attribute.name.local));
    const std::optional<std::string_view> filled =
        attribute.fixedValue ? attribute.fixedValue : attribute.defaultValue;
    if (!given) {
      if (!attribute.required) continue;
      if (filled)
        xml_.attribute(attribute.name, *filled);
      else
        complain("is missing");
      continue;
    }
    const Type* of = simple_.typeOf(attribute.type);
    const std::string text = of ? textOf(*of, *given) : plainText(*given);
    if (of) {
      Declared what;
      what.fixedValue = attribute.fixedValue;
      checkFixed(what, *of, text);
    }
    xml_.attribute(attribute.name, text);
  }
}

// Attributes and other marks that the type has no place for.
void MessageWriter::leftOver(const Type& type, const Value& value) {
  if (!isObject(value)) return;
  for (const auto& member : value.object()) {
    const std::string& key = member.first;
    const Value& one = member.second;
    if (!key.starts_with('@')) {
      const bool isKnown = !key.starts_with('$') || key == "$" || key == "$type" || key == "$any" ||
                           ((key == "$headers" || key == "$attachments") && path_.empty());
      const bool hasMembers = !SimpleValues::isSimple(type) && !type.content;
      if (!hasMembers && (key == "$file" || key == "$mediaType")) continue;
      if (isKnown && (hasMembers || key.starts_with('$')) && !(key == "$any" && !hasMembers)) continue;
      const Step step(*this, key);
      complain(key == "$file" ? onlySimpleOfFile : "there is no such member");
      continue;
    }
    const bool isKnown = std::any_of(type.attributes.begin(), type.attributes.end(),
                                     [&](const Attribute& a) { return meansAttribute(key, a.name); });
    if (isKnown) continue;
    const Step step(*this, key);
    const Name name = nameOf(attributeKey(key));
    if (type.anyAttribute && isName(name.local)) {
      xml_.attribute(name, plainText(one));
      continue;
    }
    std::vector<std::string> names;
    for (const Attribute& a : type.attributes) names.push_back('@' + std::string(a.name.local));
    complain("there is no such attribute" + suggestion(key, names));
  }
}

void MessageWriter::complex(const Type& type, const Value& value) {
  if (!type.error.empty()) {
    complain("is of a type that is not known: " + std::string(type.error));
    untyped(value);
    return;
  }
  if (type.content) {
    simpleContent(type, value);
    return;
  }
  if (!isObject(value)) {
    if (type.mixed)
      untyped(value);
    else
      complain(std::string(kindOf(value)) + ", where an object is wanted");
    return;
  }
  const Value* text = value.find("$");
  if (text && isList(*text)) {
    mixed(type, value);
    return;
  }
  if (text && type.mixed)
    xml_.text(plainText(*text));
  else if (text)
    complain("has no text: \"$\" is too much");
  if (sequence(type, value)) return;
  const Content content(service_, type, value, path_, findings_);
  for (const Placed& placed : content.placed()) place(placed);
}

namespace {

constexpr size_t mostPlainMembers = 64;

}  // namespace

// Members that come one behind the other, each under a name of its own.
bool MessageWriter::isPlainSequence(const Type& type) {
  const auto [found, isNew] = plainSequences_.try_emplace(&type, false);
  if (!isNew) return found->second;
  std::set<std::string_view> names;
  const bool isPlain = std::all_of(type.members.begin(), type.members.end(), [&names](const Member& one) {
    return !one.any && !one.isReference && one.choice.empty() && one.group == 0 && one.error.empty() &&
           names.insert(one.name.local).second;
  });
  found->second = isPlain && type.members.size() <= mostPlainMembers && !schema::isAnyType(type);
  return found->second;
}

// Most values have what their type wants and nothing else, so that there is nothing to choose, to fill in or
// to complain of. False, and nothing written, for any other.
bool MessageWriter::sequence(const Type& type, const Value& value) {
  if (!isPlainSequence(type)) return false;
  const std::vector<Member>& members = type.members;
  std::array<const std::pair<std::string, Value>*, mostPlainMembers> given{};
  size_t next = 0;
  for (const auto& one : value.object()) {
    const std::string& key = one.first;
    if (key.starts_with('@') || (key.starts_with('$') && key != "$any")) continue;
    size_t tried = 0;
    for (; tried < members.size() && members[next].name.local != key; ++tried)
      next = next + 1 < members.size() ? next + 1 : 0;
    if (tried == members.size() || given[next]) return false;
    const uint64_t count = isList(one.second) ? one.second.list().size() : 1;
    if (isList(one.second) && members[next].max == 1) return false;
    if (count < members[next].min || count > members[next].max) return false;
    given[next] = &one;
  }
  for (size_t i = 0; i < members.size(); ++i) {
    if (!given[i] && members[i].min > 0) return false;
  }
  for (size_t i = 0; i < members.size(); ++i) {
    if (!given[i]) continue;
    const Declared what = Declared::of(members[i], service_);
    const Value& one = given[i]->second;
    if (!isList(one)) {
      element(what, one, given[i]->first);
      continue;
    }
    for (size_t k = 0; k < one.list().size(); ++k)
      element(what, one.list()[k], given[i]->first + '[' + std::to_string(k) + ']');
  }
  return true;
}

void MessageWriter::simpleContent(const Type& type, const Value& value) {
  const Type* content = simple_.typeOf(*type.content);
  if (content && enclosed(*content, value)) return;
  const Value* text = isObject(value) ? value.find("$") : &value;
  if (!text) {
    const std::string fault = content ? simple_.faultOf(*content, "") : std::string();
    if (!fault.empty()) complain("has no text: give it as \"$\"");
    return;
  }
  xml_.text(content ? textOf(*content, *text) : plainText(*text));
}

// Texts and elements in an order of their own: it is kept, and only how many there are is judged.
void MessageWriter::mixed(const Type& type, const Value& value) {
  Value merged{Value::Object{}};
  std::vector<std::pair<std::string, size_t>> order;
  for (const auto& [key, one] : value.object()) {
    if (key != "$") merged[key] = one;
  }
  const Value::List& pieces = value.find("$")->list();
  for (const Value& piece : pieces) {
    if (!isObject(piece)) continue;
    for (const auto& [key, one] : piece.object()) merged.add(key, one);
  }
  const Content content(service_, type, merged, path_, findings_);
  std::vector<Placed> placed = content.placed();
  const auto take = [&](std::string_view key) {
    const auto found = std::find_if(placed.begin(), placed.end(), [key](const Placed& one) {
      return std::string_view(one.step).substr(0, one.step.find('[')) == key;
    });
    if (found == placed.end()) return;
    const Placed one = std::move(*found);
    placed.erase(found);
    place(one);
  };
  for (const Value& piece : pieces) {
    if (isObject(piece)) {
      for (const auto& member : piece.object()) take(member.first);
      continue;
    }
    if (!type.mixed) complain("there is a text between its elements");
    xml_.text(plainText(piece));
  }
  for (const Placed& one : placed) place(one);
}

Declared MessageWriter::declared(const Placed& placed) const {
  return placed.element ? Declared::of(*placed.element) : Declared::of(*placed.member, service_);
}

void MessageWriter::place(const Placed& placed) {
  if (!placed.element && (!placed.member || placed.member->any)) {
    wildcard(placed);
    return;
  }
  const Declared what = declared(placed);
  if (!placed.value)
    filledIn(what);
  else
    element(what, *placed.value, placed.step);
}

void MessageWriter::filledIn(const Declared& what) {
  xml_.begin(what.name);
  const Type* type = encoding_.empty() ? nullptr : simple_.typeOf(what.type);
  if (type && !type->name.empty()) typeAttribute(*type);
  xml_.text(what.fixedValue ? *what.fixedValue : *what.defaultValue);
  xml_.end(what.name);
}

}  // namespace ztservice::call
