#include "ztservice/call/AnswerValues.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "ztservice/call/Binary.h"
#include "ztservice/call/Lexical.h"
#include "ztservice/call/ValueFacts.h"

namespace ztservice::call {

namespace {

bool isEncoding(std::string_view space) { return space == encoding11Space || space == encoding12Space; }

// Marks of the message itself, which are no values.
bool isMark(const Name& name) {
  return name.space == instanceSpace || isEncoding(name.space) || isEnvelope(name.space);
}

bool isNilElement(const AnswerTree::Element& element) {
  const std::string_view* nil = element.attribute(nilName);
  return nil && (*nil == "true" || *nil == "1");
}

}  // namespace

void AnswerValues::fail(const std::string& text) const {
  throw Error({tree_.what()}, path_.empty() ? text : path_ + ": " + text);
}

void AnswerValues::doubt(const std::string& text) {
  constexpr size_t most = 20;
  if (options_.isStrict) fail(text);
  if (answer_.warnings.size() < most) answer_.warnings.push_back(path_.empty() ? text : path_ + ": " + text);
}

const Type* AnswerValues::typeOf(const Name& element) {
  const ztservice::Element* known = service_.element(element);
  return known ? simple_.typeOf(known->type) : nullptr;
}

void AnswerValues::add(Value& to, std::string_view key, const Element& element, const Type* type,
                       bool isList) {
  const Step step(*this, key);
  Value one = value(element, type, true);
  if (to.isNull()) to = Value(Value::Object{});
  if (isList && !to.find(key)) to[key] = Value(Value::List{});
  to.add(key, std::move(one));
}

void AnswerValues::addUnknown(Value& to, const Element& element) {
  constexpr size_t most = 2000;
  if (to.kind() == Value::Kind::object && to.object().size() >= most)
    fail("more than " + std::to_string(most) + " different members");
  add(to, keyOf(element.name), element, typeOf(element.name), false);
}

void AnswerValues::unknown(const Element& element, Value& to) {
  {
    const Step step(*this, element.name.local);
    doubt("there is no such member");
  }
  addUnknown(to, element);
}

const AnswerTree::Element& AnswerValues::target(const Element& element,
                                                std::vector<const Element*>& followed) {
  const Element* at = &element;
  while (true) {
    const std::string_view* reference = at->attribute({{}, "href"});
    if (!reference) reference = at->attribute({encoding12Space, "ref"});
    if (!reference || !at->children.empty() || !at->isWhiteSpace()) return *at;
    const std::string_view id = reference->starts_with('#') ? reference->substr(1) : *reference;
    const Element* next = tree_.byId(id);
    if (!next) {
      if (reference->starts_with('#')) fail("refers to " + std::string(*reference) + ", which is not there");
      return *at;
    }
    if (std::find(followed.begin(), followed.end(), next) != followed.end() || !open_.insert(next).second) {
      for (const Element* one : followed) open_.erase(one);
      fail("goes in circles: " + std::string(*reference) + " is inside itself");
    }
    followed.push_back(next);
    at = next;
  }
}

Value AnswerValues::value(const Element& given, const Type* declared, bool mayBeMember) {
  std::vector<const Element*> followed;
  const bool hasHref = declared && std::any_of(declared->attributes.begin(), declared->attributes.end(),
                                               [](const Attribute& one) { return one.name.local == "href"; });
  const Element& element = hasHref ? given : target(given, followed);
  Value out = valueOf(element, declared, mayBeMember);
  for (const Element* one : followed) open_.erase(one);
  return out;
}

void AnswerValues::charge(uint64_t bytes) {
  bytes_ += bytes;
  if (bytes_ > options_.limits.bytes)
    fail("more than " + std::to_string(options_.limits.bytes) + " bytes of values");
}

std::vector<MimePart> AnswerValues::unusedParts() const {
  std::vector<MimePart> unused;
  for (const MimePart& part : parts_) {
    if (!used_.contains(&part)) unused.push_back(part);
  }
  return unused;
}

const MimePart* AnswerValues::included(const Element& element) {
  if (element.children.size() != 1 || element.children[0]->name != Name{includeSpace, "Include"})
    return nullptr;
  const std::string_view* reference = element.children[0]->attribute({{}, "href"});
  const std::string id = reference ? idOf(*reference) : std::string();
  const auto part =
      std::find_if(parts_.begin(), parts_.end(), [&id](const MimePart& one) { return one.id == id; });
  if (id.empty() || part == parts_.end())
    fail("refers to " + (reference ? std::string(*reference) : "a part") + ", which did not come beside it");
  used_.insert(&*part);
  return &*part;
}

Value AnswerValues::contentOf(const MimePart& part) {
  charge(part.bytes.size());
  if (part.file.empty()) return Value(base64Of(part.bytes));
  Value out;
  out["$file"] = part.file;
  if (!part.mediaType.empty()) out["$mediaType"] = part.mediaType;
  return out;
}

Value AnswerValues::valueOf(const Element& element, const Type* declared, bool mayBeMember) {
  charge(element.text.size());
  for (const std::string& text : element.textBehind) charge(text.size());
  for (const AnswerTree::Attribute& one : element.attributes) charge(one.value.size());
  const Type* type = declared;
  bool isOther = false;
  if (const std::string_view* text = element.attribute(typeName)) {
    const Name name = tree_.resolved(element, *text);
    const Type* actual = service_.type(name);
    if (!actual && declared) actual = declared;
    const bool isArray = isEncoding(name.space) && name.local == "Array";
    if (actual && !(isArray && declared && !schema::isAnyType(*declared))) type = actual;
    isOther = type != declared && declared && !schema::isAnyType(*declared) && !type->name.empty() &&
              type->kind == Type::Kind::complex;
  }
  if (isNilElement(element)) return nilOf(element, type);
  if (!type || !type->error.empty() || schema::isAnyType(*type)) return generic(element);
  if (SimpleValues::isSimple(*type)) return scalar(*type, element);
  if (type->kind == Type::Kind::array) return array(*type, element);
  Value out = complex(*type, element);
  if (isOther && mayBeMember && out.kind() == Value::Kind::object)
    out.object().insert(out.object().begin(), {"$type", Value(type->name.local)});
  return out;
}

Value AnswerValues::nilOf(const Element& element, const Type* type) {
  Value out;
  attributes(element, type, out);
  if (!out.isNull()) out["$"] = Value();
  return out;
}

void AnswerValues::attributes(const Element& element, const Type* type, Value& out) {
  for (const AnswerTree::Attribute& one : element.attributes) {
    if (isMark(one.name) ||
        (one.name.space.empty() && one.name.local == "id" && !hasAttribute(type, one.name)))
      continue;
    if (one.name.space.empty() && one.name.local == "href" && !hasAttribute(type, one.name)) continue;
    const Attribute* known = attributeOf(type, one.name);
    const Type* of = known ? simple_.typeOf(known->type) : nullptr;
    if (type && !known && !type->anyAttribute) {
      const Step step(*this, '@' + std::string(one.name.local));
      doubt("there is no such attribute");
    }
    const std::string key = '@' + (known ? std::string(one.name.local) : keyOf(one.name));
    const Step step(*this, key);
    out[key] = of ? scalarOf(*of, element, one.value) : Value(one.value);
  }
}

const Attribute* AnswerValues::attributeOf(const Type* type, const Name& name) {
  if (!type) return nullptr;
  for (const Attribute& one : type->attributes) {
    if (one.name == name) return &one;
  }
  return nullptr;
}

bool AnswerValues::hasAttribute(const Type* type, const Name& name) {
  return attributeOf(type, name) != nullptr;
}

Value AnswerValues::scalar(const Type& type, const Element& element) {
  if (const MimePart* part = included(element)) return contentOf(*part);
  if (!element.children.empty()) doubt("has elements in the place of a " + std::string(type.primitive));
  std::string text = element.text;
  for (const std::string& more : element.textBehind) text += more;
  return scalarOf(type, element, text);
}

Value AnswerValues::scalarOf(const Type& type, const Element& at, std::string_view given) {
  const std::string fault = simple_.faultOf(type, given);
  if (!fault.empty()) doubt(fault);
  const bool isText = type.primitive == "string" || type.primitive == "anySimpleType";
  if (type.variety == Type::Variety::unionOf || (type.variety == Type::Variety::atomic && isText))
    return Value(given);
  const std::string text = lexical::normalized(given, "collapse");
  if (type.variety == Type::Variety::list) {
    Value::List items;
    const Type* item = type.item ? simple_.typeOf(*type.item) : nullptr;
    for (size_t from = 0; from < text.size();) {
      const size_t end = std::min(text.find(' ', from), text.size());
      const std::string_view one = std::string_view(text).substr(from, end - from);
      items.push_back(item && item->variety == Type::Variety::atomic ? atom(*item, at, one) : Value(one));
      from = end + 1;
    }
    return Value(std::move(items));
  }
  return atom(type, at, text);
}

Value AnswerValues::atom(const Type& type, const Element& at, std::string_view text) {
  const std::string_view of = type.primitive;
  if (of == "boolean" && (text == "true" || text == "1")) return Value(true);
  if (of == "boolean" && (text == "false" || text == "0")) return Value(false);
  if ((of == "decimal" || of == "float" || of == "double") && lexical::isJsonNumber(text))
    return Value::number(std::string(text));
  if (of == "QName" && text.find(':') != text.npos) return Value(keyOf(tree_.resolved(at, text)));
  return Value(text);
}

Value AnswerValues::array(const Type& type, const Element& element) {
  const Type* item = type.item ? simple_.typeOf(*type.item) : nullptr;
  std::string_view dimensions = type.dimensions;
  std::string_view sizes;
  if (const std::string_view* given = element.attribute({encoding11Space, "arrayType"})) {
    const size_t bracket = std::min(given->find('['), given->size());
    if (!item || schema::isAnyType(*item))
      item = service_.type(tree_.resolved(element, given->substr(0, bracket)));
    dimensions = given->substr(bracket);
    sizes = dimensions.substr(dimensions.rfind('[') + 1);
  } else if (const std::string_view* itemType = element.attribute({encoding12Space, "itemType"})) {
    if (!item || schema::isAnyType(*item)) item = service_.type(tree_.resolved(element, *itemType));
  }
  if (const std::string_view* given = element.attribute({encoding12Space, "arraySize"})) sizes = *given;
  const bool isNested = dimensions.find('[') != dimensions.rfind('[');
  Value::List items;
  for (size_t i = 0; i < element.children.size(); ++i) {
    const Step step(*this, '[' + std::to_string(i) + ']');
    const Element& one = *element.children[i];
    items.push_back(isNested ? row(one, type, item) : value(one, item, true));
  }
  return Value(inRows(std::move(items), sizes));
}

Value::List AnswerValues::inRows(Value::List items, std::string_view sizes) {
  std::vector<size_t> dimensions;
  for (const char* at = sizes.data(); at < sizes.data() + sizes.size(); ++at) {
    size_t size = 0;
    const auto [end, error] = std::from_chars(at, sizes.data() + sizes.size(), size);
    if (error != std::errc() || size == 0) return items;
    dimensions.push_back(size);
    at = end;
  }
  size_t left = items.size();
  for (const size_t size : dimensions) {
    if (left % size != 0) return items;
    left /= size;
  }
  if (left != 1) return items;
  while (dimensions.size() > 1) {
    const size_t size = dimensions.back();
    dimensions.pop_back();
    Value::List rows;
    for (size_t i = 0; i < items.size(); i += size) {
      const auto from = std::make_move_iterator(items.begin() + static_cast<ptrdiff_t>(i));
      rows.emplace_back(Value::List(from, from + static_cast<ptrdiff_t>(size)));
    }
    items = std::move(rows);
  }
  return items;
}

Value AnswerValues::row(const Element& given, const Type& type, const Type* item) {
  std::vector<const Element*> followed;
  const Element& element = target(given, followed);
  Value::List items;
  for (size_t i = 0; i < element.children.size(); ++i) {
    const Step step(*this, '[' + std::to_string(i) + ']');
    const Element& one = *element.children[i];
    items.push_back(one.attribute({encoding11Space, "arrayType"}) ? row(one, type, item)
                                                                  : value(one, item, true));
  }
  for (const Element* one : followed) open_.erase(one);
  return Value(std::move(items));
}

Value AnswerValues::complex(const Type& type, const Element& element) {
  Value out{Value::Object{}};
  attributes(element, &type, out);
  if (type.content) {
    const Type* content = simple_.typeOf(*type.content);
    Value text = content ? scalar(*content, element) : Value(element.text);
    if (out.object().empty() && type.attributes.empty() && !type.anyAttribute) return text;
    if (isObject(text)) {
      for (auto& [key, value] : text.object()) out[key] = std::move(value);
      return out;
    }
    out["$"] = std::move(text);
    return out;
  }
  if (type.mixed && !element.isWhiteSpace()) {
    mixed(type, element, out);
    return out;
  }
  if (!element.isWhiteSpace()) doubt("has a text, which its type does not have");
  size_t next = 0;
  for (const auto& child : element.children) member(type, *child, next, out);
  if (options_.isStrict) complainOfMissing(type, out);
  return out;
}

void AnswerValues::complainOfMissing(const Type& type, const Value& out) {
  for (const Member& one : type.members) {
    if (one.any || one.min == 0 || !one.choice.empty() || one.group > 0 || one.isReference) continue;
    if (!out.find(one.name.local)) fail(std::string(one.name.local) + " is missing");
  }
}

void AnswerValues::mixed(const Type& type, const Element& element, Value& out) {
  if (element.children.empty()) {
    out["$"] = Value(element.text);
    return;
  }
  Value::List pieces;
  if (!element.text.empty()) pieces.emplace_back(element.text);
  size_t next = 0;
  for (size_t i = 0; i < element.children.size(); ++i) {
    Value piece{Value::Object{}};
    member(type, *element.children[i], next, piece, false);
    pieces.push_back(std::move(piece));
    if (!element.textBehind[i].empty()) pieces.emplace_back(element.textBehind[i]);
  }
  out["$"] = Value(std::move(pieces));
}

void AnswerValues::member(const Type& type, const Element& child, size_t& next, Value& out, bool mayRepeat) {
  const Member* found = nullptr;
  const ztservice::Element* standIn = nullptr;
  const size_t count = type.members.size();
  for (size_t i = 0; i < count && !found; ++i) {
    const Member& one = type.members[(next + i) % count];
    if (one.any) continue;
    if (one.name == child.name)
      found = &one;
    else if (one.isReference)
      standIn = substituteOf(one, child.name);
    if (standIn) found = &one;
    if (found) next = (next + i) % count;
  }
  if (!found) found = sameLocal(type, child);
  if (found) {
    const ztservice::Element* element = standIn              ? standIn
                                        : found->isReference ? service_.element(found->name)
                                                             : nullptr;
    const Type* of = simple_.typeOf(element ? element->type : found->type);
    if (isNilElement(child) && !isEncoded_ && !(element ? element->nillable : found->nillable)) {
      const Step step(*this, child.name.local);
      doubt("is nil, but cannot be");
    }
    add(out, child.name.local, child, of, mayRepeat && found->max > 1);
    return;
  }
  const bool hasWildcard = std::any_of(type.members.begin(), type.members.end(),
                                       [](const Member& one) { return one.any.has_value(); });
  if (!hasWildcard) {
    unknown(child, out);
    return;
  }
  addUnknown(out, child);
}

const ztservice::Element* AnswerValues::substituteOf(const Member& member, const Name& name) {
  const ztservice::Element* head = service_.element(member.name);
  if (!head) return nullptr;
  const auto found = std::find(head->substitutes.begin(), head->substitutes.end(), name);
  return found == head->substitutes.end() ? nullptr : service_.element(name);
}

const Member* AnswerValues::sameLocal(const Type& type, const Element& child) {
  for (const Member& one : type.members) {
    if (one.any || one.name.local != child.name.local) continue;
    const Step step(*this, child.name.local);
    doubt("is of the namespace \"" + std::string(child.name.space) + "\", not of \"" +
          std::string(one.name.space) + '"');
    return &one;
  }
  return nullptr;
}

Value AnswerValues::generic(const Element& element) {
  if (const MimePart* part = included(element)) return contentOf(*part);
  Value out;
  attributes(element, nullptr, out);
  if (element.children.empty()) {
    if (out.isNull()) return Value(element.text);
    if (!element.text.empty()) out["$"] = Value(element.text);
    return out;
  }
  if (const std::string_view* type = element.attribute({encoding11Space, "arrayType"})) {
    const Type* item = service_.type(tree_.resolved(element, type->substr(0, type->find('['))));
    Value::List items;
    for (const auto& child : element.children) {
      const Step step(*this, child->name.local);
      items.push_back(value(*child, item, true));
    }
    return Value(std::move(items));
  }
  for (const auto& child : element.children) addUnknown(out, *child);
  return out;
}

}  // namespace ztservice::call
