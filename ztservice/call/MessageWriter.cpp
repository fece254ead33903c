#include "ztservice/call/MessageWriter.h"

#include <algorithm>

#include "ztservice/call/Lexical.h"
#include "ztservice/call/Nearest.h"
#include "ztservice/schema/Builtins.h"

namespace ztservice::call {

namespace {

constexpr Name typeName{instanceSpace, "type"};
constexpr Name nilName{instanceSpace, "nil"};
// Elements inside each other: what is deeper is no message.
constexpr size_t deepest = 200;

bool isObject(const Value& value) { return value.kind() == Value::Kind::object; }
bool isList(const Value& value) { return value.kind() == Value::Kind::list; }

bool isNil(const Value& value) {
  if (value.isNull()) return true;
  const Value* text = value.find("$");
  return text && text->isNull();
}

const char* kindOf(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::null:
      return "null";
    case Value::Kind::boolean:
      return "a boolean";
    case Value::Kind::number:
      return "a number";
    case Value::Kind::text:
      return "a text";
    case Value::Kind::list:
      return "a list";
    case Value::Kind::object:
      return "an object";
  }
  return "";
}

bool isAnyType(const Type& type) { return type.name.local == schema::anyType.local && type.file.empty(); }

std::string shown(const Name& name) {
  return name.space.empty() ? std::string(name.local)
                            : '{' + std::string(name.space) + '}' + std::string(name.local);
}

// "{space}local", and of XML Schema "xs:int" too.
Name nameOf(std::string_view text) {
  if (text.starts_with('{') && text.find('}') != std::string_view::npos)
    return {text.substr(1, text.find('}') - 1), text.substr(text.find('}') + 1)};
  for (const std::string_view prefix : {"xs:", "xsd:"}) {
    if (text.starts_with(prefix)) return {schema::schemaNamespace, text.substr(prefix.size())};
  }
  return {{}, text};
}

// What a parser may call a local name.
bool isName(std::string_view text) {
  size_t at = 0;
  if (text.empty() || unfitAt(text) != std::string_view::npos) return false;
  if (!lexical::isNameStart(lexical::nextCharacter(text, at)) || text.front() == ':') return false;
  while (at < text.size()) {
    const uint32_t c = lexical::nextCharacter(text, at);
    if (c == ':' || !lexical::isNameCharacter(c)) return false;
  }
  return true;
}

std::string_view attributeKey(std::string_view key) { return key.substr(1); }

bool meansAttribute(std::string_view key, const Name& name) {
  if (!key.starts_with('@')) return false;
  key = attributeKey(key);
  if (name.space == schema::xmlNamespace && key.starts_with("xml:")) return key.substr(4) == name.local;
  return Content::means(key, name);
}

}  // namespace

// A step of the path, as long as something inside is written.
class MessageWriter::Step {
 public:
  Step(MessageWriter& writer, std::string_view step) : writer_(writer), length_(writer.path_.size()) {
    if (length_ > 0 && !step.empty() && !step.starts_with('[')) writer.path_ += '.';
    writer.path_ += step;
    ++writer.depth_;
  }
  ~Step() {
    while (writer_.path_.size() > length_) writer_.path_.pop_back();
    --writer_.depth_;
  }
  Step(const Step&) = delete;
  Step& operator=(const Step&) = delete;

  // Says so once.
  bool isTooDeep() const {
    if (writer_.depth_ <= deepest) return false;
    writer_.findings_.addFatal(writer_.path_, "is more than " + std::to_string(deepest) + " elements deep");
    return true;
  }

 private:
  MessageWriter& writer_;
  size_t length_;
};

Declared Declared::of(const Element& element) {
  return {element.name,         element.type,       element.nillable,    element.isAbstract,
          element.defaultValue, element.fixedValue, element.substitutes, element.error};
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
    complain(shown(found->name) + " does not come from " + shown(declared->name));
  } else if (found->isAbstract) {
    complain(shown(found->name) + " is abstract");
  }
  return found;
}

bool MessageWriter::isDerived(const Type* type, const Type& base) const {
  if (isAnyType(base)) return true;
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
      !isAnyType(*type))
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
                           (key == "$headers" && path_.empty());
      const bool hasMembers = !SimpleValues::isSimple(type) && !type.content;
      if (isKnown && (hasMembers || key.starts_with('$')) && !(key == "$any" && !hasMembers)) continue;
      const Step step(*this, key);
      complain("there is no such member");
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
  const Content content(service_, type, value, path_, findings_);
  for (const Placed& placed : content.placed()) place(placed);
}

void MessageWriter::simpleContent(const Type& type, const Value& value) {
  const Type* content = simple_.typeOf(*type.content);
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
  if (placed.element) return Declared::of(*placed.element);
  const Member& member = *placed.member;
  Declared what;
  what.name = member.name;
  what.type = member.type;
  what.nillable = member.nillable;
  what.defaultValue = member.defaultValue;
  what.fixedValue = member.fixedValue;
  what.error = member.error;
  const Element* element = member.isReference ? service_.element(member.name) : nullptr;
  if (element) {
    what.type = element->type;
    what.nillable = element->nillable;
    what.isAbstract = element->isAbstract;
    what.substitutes = element->substitutes;
  }
  return what;
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

// Raw XML under "$any", or an element of which nothing but the name is known.
void MessageWriter::wildcard(const Placed& placed) {
  const Step step(*this, placed.step);
  if (step.isTooDeep()) return;
  const std::string_view key = std::string_view(placed.step).substr(0, placed.step.rfind('['));
  if (key == "$any") {
    if (placed.value->kind() != Value::Kind::text) {
      complain(std::string(kindOf(*placed.value)) + ", where XML in a text is wanted");
      return;
    }
    const std::string fault = faultOfXml(placed.value->text());
    if (!fault.empty())
      findings_.addFatal(path_, "is no XML: " + fault);
    else
      xml_.raw(placed.value->text());
    return;
  }
  const Name name = nameOf(key);
  if (!isName(name.local)) {
    findings_.addFatal(path_, "is no name of an element");
    return;
  }
  xml_.begin(name);
  if (placed.value->isNull())
    xml_.attribute(nilName, "true");
  else
    untyped(*placed.value);
  xml_.end(name);
}

// Of an element without a type that could say more; numbers and booleans say what they are.
void MessageWriter::untyped(const Value& value) {
  if (isObject(value)) {
    untypedAttributes(value);
    const Value* text = value.find("$");
    if (text && !text->isNull() && !isList(*text)) xml_.text(plainText(*text));
    for (const auto& [key, one] : value.object()) {
      if (key.starts_with('@') || (key.starts_with('$') && key != "$any")) continue;
      if (!isList(one)) {
        wildcard({nullptr, nullptr, &one, key});
        continue;
      }
      for (size_t i = 0; i < one.list().size(); ++i)
        wildcard({nullptr, nullptr, &one.list()[i], key + '[' + std::to_string(i) + ']'});
    }
    return;
  }
  if (isList(value)) {
    complain("a list of what has no type");
    return;
  }
  std::string_view local = encoding_.empty() ? "" : "string";
  if (value.kind() == Value::Kind::boolean) local = "boolean";
  if (value.kind() == Value::Kind::number)
    local = lexical::isOf("int", "decimal", value.text())       ? "int"
            : lexical::isOf("decimal", "decimal", value.text()) ? "decimal"
                                                                : "double";
  if (!local.empty()) xml_.attribute(typeName, xml_.qualified({schema::schemaNamespace, local}));
  xml_.text(plainText(value));
}

void MessageWriter::untypedAttributes(const Value& value) {
  for (const auto& [key, one] : value.object()) {
    if (!key.starts_with('@')) continue;
    const Step step(*this, key);
    const Name name = nameOf(attributeKey(key));
    if (isName(name.local))
      xml_.attribute(name, plainText(one));
    else
      findings_.addFatal(path_, "is no name of an attribute");
  }
}

// An array of a SOAP encoding: a list, or an object with the list under the name of its items.
void MessageWriter::items(const Type& type, const Value& value) {
  const Value* list = isObject(value) ? value.find(type.itemName) : &value;
  if (list && !isList(*list)) {
    complain(std::string(kindOf(value)) + ", where a list is wanted");
    return;
  }
  static const Value none{Value::List{}};
  itemsOf(*type.item, type.itemName, type.dimensions, list ? *list : none, !encoding_.empty());
}

void MessageWriter::itemsOf(const TypeReference& item, std::string_view itemName, std::string_view dimensions,
                            const Value& value, bool isEncoded) {
  const size_t last = dimensions.rfind('[');
  const std::string_view outer = last == std::string_view::npos ? "" : dimensions.substr(0, last);
  const std::string_view inner = last == std::string_view::npos ? "" : dimensions.substr(last);
  const size_t rank = 1 + static_cast<size_t>(std::count(inner.begin(), inner.end(), ','));
  // The values of all dimensions of the last bracket, row by row.
  std::vector<const Value*> row{&value};
  std::vector<size_t> sizes;
  for (size_t dimension = 0; dimension < rank; ++dimension) {
    std::vector<const Value*> next;
    const size_t size = row.empty() || !isList(*row.front()) ? 0 : row.front()->list().size();
    for (const Value* one : row) {
      if (!isList(*one) || one->list().size() != size) {
        complain("its rows are not of one length");
        return;
      }
      for (const Value& cell : one->list()) next.push_back(&cell);
    }
    sizes.push_back(size);
    row = std::move(next);
  }
  const Type* type = simple_.typeOf(item);
  if (isEncoded) {
    const Name itemType = type && !type->name.empty() ? type->name : schema::anyType;
    std::string size;
    const bool is12 = encoding_ == encoding12Space;
    for (const size_t one : sizes) size += (size.empty() ? "" : is12 ? " " : ",") + std::to_string(one);
    if (is12) {
      xml_.attribute({encoding12Space, "itemType"}, xml_.qualified(itemType));
      xml_.attribute({encoding12Space, "arraySize"}, size);
    } else {
      xml_.attribute({encoding11Space, "arrayType"},
                     xml_.qualified(itemType) + std::string(outer) + '[' + size + ']');
      xml_.attribute(typeName, xml_.qualified({encoding11Space, "Array"}));
    }
  }
  Declared what;
  what.name = {{}, itemName};
  what.type = item;
  what.nillable = true;
  for (size_t i = 0; i < row.size(); ++i) {
    const std::string step = '[' + std::to_string(i) + ']';
    if (outer.empty() || !isList(*row[i])) {
      element(what, *row[i], step);
      continue;
    }
    const Step inside(*this, step);
    if (inside.isTooDeep()) return;
    xml_.begin(what.name);
    itemsOf(item, itemName, outer, *row[i], isEncoded);
    xml_.end(what.name);
  }
}

std::string MessageWriter::simpleText(const TypeReference& reference, const Value& value,
                                      const std::string& name) {
  const Step step(*this, name);
  const Type* type = simple_.typeOf(reference);
  if (type && !SimpleValues::isSimple(*type)) {
    complain("is of a type with elements, which cannot be sent in an address or a form");
    return {};
  }
  return type ? textOf(*type, value) : plainText(value);
}

// A value of a simple type, checked; names with a namespace get the prefix that stands for it.
std::string MessageWriter::textOf(const Type& type, const Value& value) {
  const bool isOfList = type.variety == Type::Variety::list;
  if (isObject(value)) {
    const Value* text = value.find("$");
    if (text && !isObject(*text)) return textOf(type, *text);
    complain(std::string("an object, where a ") + (isOfList ? "list" : "value") + " is wanted");
    return {};
  }
  std::string text;
  if (isList(value)) {
    if (!isOfList) {
      complain("a list, but it occurs once");
      return {};
    }
    for (const Value& one : value.list()) text.append(text.empty() ? "" : " ").append(plainText(one));
  } else {
    text = plainText(value);
  }
  if (type.primitive == "QName" && text.starts_with('{')) {
    const Name name = nameOf(text);
    if (isName(name.local)) text = xml_.qualified(name);
  }
  std::string fault = simple_.faultOf(type, text);
  if (!fault.empty()) complain(std::move(fault));
  return text;
}

std::string MessageWriter::plainText(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::boolean:
      return value.boolean() ? "true" : "false";
    case Value::Kind::number:
    case Value::Kind::text:
      checkText(value.text());
      return value.text();
    case Value::Kind::null:
    case Value::Kind::list:
    case Value::Kind::object:
      break;
  }
  complain(std::string(kindOf(value)) + ", where a value is wanted");
  return {};
}

void MessageWriter::checkText(std::string_view text) {
  const size_t at = unfitAt(text);
  if (at == std::string_view::npos) return;
  constexpr char digits[] = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(text[at]);
  findings_.addFatal(path_, std::string("the byte 0x") + digits[byte >> 4] + digits[byte & 15] + " at " +
                                std::to_string(at) + " cannot stand in XML");
}

}  // namespace ztservice::call
