#pragma once

#include <cstdint>
#include <string_view>

// The names that documents of services are made of, as numbers: what is none of them is never looked at.
namespace ztservice::parse {

// The namespaces that mean something. Those of XML Schema, whatever their year, are one, and so are those of
// WS-Addressing, which are told by a part of them.
enum class Space : uint8_t { none, schema, wsdl, soap11, soap12, http, mime, addressing, other };

enum class Word : uint8_t {
  other,
  abstract,
  action,
  address,
  all,
  any,
  anyAttribute,
  arrayType,
  attribute,
  attributeFormDefault,
  attributeGroup,
  base,
  binding,
  body,
  choice,
  complexContent,
  complexType,
  content,
  defaultValue,
  definitions,
  element,
  elementFormDefault,
  encodingStyle,
  enumeration,
  extension,
  facet,  // any but enumeration
  fault,
  fixed,
  form,
  group,
  header,
  import,
  include,
  input,
  itemType,
  list,
  location,
  maxOccurs,
  memberTypes,
  message,
  mimeXml,
  minOccurs,
  mixed,
  multipartRelated,
  name,
  nameSpace,
  nillable,
  operation,
  output,
  parameterOrder,
  part,
  parts,
  port,
  portType,
  processContents,
  redefine,
  ref,
  restriction,
  schema,
  schemaLocation,
  sequence,
  service,
  simpleContent,
  simpleType,
  soapAction,
  style,
  substitutionGroup,
  targetNamespace,
  transport,
  type,
  types,
  unionOf,
  urlEncoded,
  urlReplacement,
  use,
  value,
  verb,
};

Space spaceOf(std::string_view uri);
Word wordOf(std::string_view local);

}  // namespace ztservice::parse
