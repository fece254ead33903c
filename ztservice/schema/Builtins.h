#pragma once

#include "ztservice/schema/Type.h"

namespace ztservice::schema {

inline constexpr std::string_view schemaNamespace = "http://www.w3.org/2001/XMLSchema";
inline constexpr std::string_view xmlNamespace = "http://www.w3.org/XML/1998/namespace";
inline constexpr Name anyType{schemaNamespace, "anyType"};
inline constexpr Name anySimpleType{schemaNamespace, "anySimpleType"};

// The built-in type of whatever there is, of any year of XML Schema.
inline bool isAnyType(const Type& type) { return type.name.local == anyType.local && type.file.empty(); }

bool isSoapEncoding(std::string_view space);
// Those of XML Schema, of any year, and of the SOAP encodings.
bool isBuiltinNamespace(std::string_view space);

// Fills in a type that needs no schema; false where there is none of that name.
// \param type with its name.
bool fillBuiltin(Type& type);

// The attributes of the XML namespace that are known without a schema, in the order that xml:specialAttrs has
// them here.
struct XmlAttribute {
  Name name;
  Name type;
};
std::span<const XmlAttribute> xmlAttributes();

}  // namespace ztservice::schema
