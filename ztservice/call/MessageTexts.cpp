// Of the writer of messages what has no elements of its own: wildcards, arrays and texts.
#include <algorithm>
#include <limits>

#include "ztservice/call/Binary.h"
#include "ztservice/call/MessageWriter.h"
#include "ztservice/call/ValueFacts.h"
#include "ztservice/load/OpenFile.h"

namespace ztservice::call {

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
    if (value.find("$file")) complain(onlySimpleOfFile);
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

// Content that a file has, or that is better kept beside the message; false for any other.
bool MessageWriter::enclosed(const Type& type, const Value& value) {
  constexpr size_t leastBeside = 1024;
  constexpr std::string_view usual = "application/octet-stream";
  const bool isBase64 = type.primitive == "base64Binary";
  const bool goesBeside = isBase64 && enclosure_ && enclosure_->isMtom();
  if (!value.find("$file")) {
    const Value* text = isObject(value) ? value.find("$") : &value;
    if (!goesBeside || !text || text->kind() != Value::Kind::text || text->text().size() < leastBeside)
      return false;
    MimePart part;
    part.bytes = bytesOfBase64(textOf(type, *text));
    part.mediaType = mediaTypeOf(value, usual);
    include(std::move(part));
    return true;
  }
  MimePart part;
  part.file = fileOf(value);
  part.mediaType = mediaTypeOf(value, usual);
  if (part.file.empty()) return true;
  if (type.name == attachmentReference) {
    xml_.text("cid:" + enclosure_->add(std::move(part)));
    return true;
  }
  if (goesBeside) {
    include(std::move(part));
    return true;
  }
  std::string text = parse::bytesOf(part.file, std::numeric_limits<uint64_t>::max());
  if (isBase64) text = base64Of(text);
  if (type.primitive == "hexBinary") text = hexOf(text);
  xml_.text(textOf(type, Value(std::move(text))));
  return true;
}

// Empty, and said so, where it cannot be had.
std::string MessageWriter::fileOf(const Value& value) {
  const Value* file = value.find("$file");
  if (file->kind() != Value::Kind::text || file->text().empty()) {
    complain("$file is no name of a file");
    return {};
  }
  if (enclosure_ && enclosure_->allowsFiles()) return file->text();
  findings_.addFatal(path_, "names a file, which is not allowed here");
  return {};
}

std::string MessageWriter::mediaTypeOf(const Value& value, std::string_view otherwise) {
  const Value* given = value.find("$mediaType");
  if (!given) given = value.find("@contentType");
  if (!given) return std::string(otherwise);
  const std::string type = plainText(*given);
  const bool isHeader = std::all_of(type.begin(), type.end(), [](char c) { return c >= ' ' && c <= '~'; });
  if (!type.empty() && isHeader) return type;
  findings_.addFatal(path_, "its media type cannot stand in a header");
  return {};
}

void MessageWriter::include(MimePart part) {
  const Name name{includeSpace, "Include"};
  xml_.begin(name);
  xml_.attribute({{}, "href"}, "cid:" + enclosure_->add(std::move(part)));
  xml_.end(name);
}

MimePart MessageWriter::attachment(const TypeReference& reference, const Value& value,
                                   std::string_view mediaType, const std::string& name) {
  MimePart part;
  if (value.find("$file")) {
    const Step step(*this, name);
    part.file = fileOf(value);
  } else {
    part.bytes = simpleText(reference, value, name);
    const Type* type = simple_.typeOf(reference);
    if (type && type->primitive == "base64Binary") part.bytes = bytesOfBase64(part.bytes);
    if (type && type->primitive == "hexBinary") part.bytes = bytesOfHex(part.bytes);
  }
  part.mediaType = mediaTypeOf(value, mediaType);
  return part;
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
