#include "ztservice/schema/Builtins.h"

#include <unordered_map>

#include "ztservice/load/Words.h"

namespace ztservice::schema {

namespace {

// The type, and the primitive one that it comes from: of XML Schema part 2, of its drafts, and of the SOAP
// encodings, which have all of these under names of their own.
const std::unordered_map<std::string_view, std::string_view> atomicTypes = {
    {"CDATA", "string"},
    {"ENTITY", "string"},
    {"ID", "string"},
    {"IDREF", "string"},
    {"NCName", "string"},
    {"NMTOKEN", "string"},
    {"NOTATION", "NOTATION"},
    {"Name", "string"},
    {"QName", "QName"},
    {"anySimpleType", "anySimpleType"},
    {"anyURI", "anyURI"},
    {"arrayCoordinate", "string"},
    {"base64", "base64Binary"},
    {"base64Binary", "base64Binary"},
    {"binary", "base64Binary"},
    {"boolean", "boolean"},
    {"byte", "decimal"},
    {"date", "date"},
    {"dateTime", "dateTime"},
    {"decimal", "decimal"},
    {"double", "double"},
    {"duration", "duration"},
    {"float", "float"},
    {"gDay", "gDay"},
    {"gMonth", "gMonth"},
    {"gMonthDay", "gMonthDay"},
    {"gYear", "gYear"},
    {"gYearMonth", "gYearMonth"},
    {"hexBinary", "hexBinary"},
    {"int", "decimal"},
    {"integer", "decimal"},
    {"language", "string"},
    {"long", "decimal"},
    {"negativeInteger", "decimal"},
    {"nonNegativeInteger", "decimal"},
    {"nonPositiveInteger", "decimal"},
    {"normalizedString", "string"},
    {"positiveInteger", "decimal"},
    {"short", "decimal"},
    {"string", "string"},
    {"time", "time"},
    {"timeDuration", "duration"},
    {"timeInstant", "dateTime"},
    {"token", "string"},
    {"unsignedByte", "decimal"},
    {"unsignedInt", "decimal"},
    {"unsignedLong", "decimal"},
    {"unsignedShort", "decimal"},
    {"uri", "anyURI"},
    {"uriReference", "anyURI"},
};

const std::unordered_map<std::string_view, std::string_view> listTypes = {
    {"ENTITIES", "ENTITY"},
    {"IDREFS", "IDREF"},
    {"NMTOKENS", "NMTOKEN"},
};

constexpr XmlAttribute attributesOfXml[] = {
    {{xmlNamespace, "lang"}, {schemaNamespace, "language"}},
    {{xmlNamespace, "space"}, {schemaNamespace, "NCName"}},
    {{xmlNamespace, "base"}, {schemaNamespace, "anyURI"}},
    {{xmlNamespace, "id"}, {schemaNamespace, "ID"}},
};

void fillAnyType(Type& type) {
  type.kind = Type::Kind::complex;
  type.mixed = true;
  Member any;
  any.any = Wildcard{"##any", "lax"};
  any.min = 0;
  any.max = Member::unbounded;
  type.members = {any};
  type.anyAttribute = Wildcard{"##any", "lax"};
}

void fillArray(Type& type) {
  type.kind = Type::Kind::array;
  type.itemName = "item";
  type.item = TypeReference{anyType};
  type.dimensions = "[]";
}

}  // namespace

bool isSoapEncoding(std::string_view space) {
  return space == "http://schemas.xmlsoap.org/soap/encoding/" ||
         space == "http://www.w3.org/2003/05/soap-encoding";
}

bool isBuiltinNamespace(std::string_view space) {
  return parse::spaceOf(space) == parse::Space::schema || isSoapEncoding(space);
}

bool fillBuiltin(Type& type) {
  const std::string_view local = type.name.local;
  const bool encoding = isSoapEncoding(type.name.space);
  if (local == "anyType" || local == "ur-type" || (encoding && local == "Struct")) {
    fillAnyType(type);
    return true;
  }
  if (encoding && local == "Array") {
    fillArray(type);
    return true;
  }
  type.kind = Type::Kind::atomic;
  if (const auto list = listTypes.find(local); list != listTypes.end()) {
    type.variety = Type::Variety::list;
    type.primitive = "string";
    type.item = TypeReference{{type.name.space, list->second}};
    return true;
  }
  const auto atomic = atomicTypes.find(local);
  if (atomic == atomicTypes.end()) return false;
  type.primitive = atomic->second;
  return true;
}

std::span<const XmlAttribute> xmlAttributes() { return attributesOfXml; }

}  // namespace ztservice::schema
