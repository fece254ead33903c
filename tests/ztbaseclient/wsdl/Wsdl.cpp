#include "tests/ztbaseclient/wsdl/Wsdl.h"

#include <sstream>

#include "ztclient/answers/WsdlJson.h"

namespace wsdl {

const std::string declarations =
    "xmlns='http://schemas.xmlsoap.org/wsdl/' xmlns:w='http://schemas.xmlsoap.org/wsdl/' "
    "xmlns:soap='http://schemas.xmlsoap.org/wsdl/soap/' xmlns:xs='http://www.w3.org/2001/XMLSchema' "
    "xmlns:enc='http://schemas.xmlsoap.org/soap/encoding/' xmlns:t='urn:t' ";

std::string definitions(const std::string& inside, const std::string& attributes) {
  return "<definitions " + declarations + attributes + ">" + inside + "</definitions>";
}

std::string schema(const std::string& inside, const std::string& attributes) {
  return "<xs:schema " + attributes + ">" + inside + "</xs:schema>";
}

std::string withPart(const std::string& part, const std::string& types, const std::string& outside) {
  return definitions("<types>" + types + "</types><message name='M'><part name='p' " + part +
                     "/></message><portType name='P'><operation name='o'><input message='t:M'/></operation>"
                     "</portType><binding name='B' type='t:P'><operation name='o'/></binding>"
                     "<service><port binding='t:B'><soap:address location='x'/></port></service>" +
                     outside);
}

void parse(CWsdlParser& parser, const std::string& document) { parser.Parse(testsupport::arrayOf(document)); }

namespace {

std::string text(const Json& json) { return json.get<std::string>(); }

std::string shortForm(const Json& type) {
  if (type.contains("error")) return text(type["error"]);
  std::string line = text(type["kind"]) + " " + text(type["name"]);
  if (type["namespace"] != "urn:t") line += " of " + text(type["namespace"]);
  if (type["itemName"] != "") line += " item " + text(type["itemName"]);
  if (type["superClass"] != "") line += " : " + text(type["superClass"]);
  std::string members;
  for (const Json& member : type["elements"]) {
    members += (members.empty() ? "" : ", ") + text(member["name"]) + ": " + text(member["type"]);
    const std::string space = text(member["typeNamespace"]);
    if (space != "urn:t" && space != "http://www.w3.org/2001/XMLSchema") members += " of '" + space + "'";
    if (!member["required"]) members += " optional";
  }
  return members.empty() ? line : line + " {" + members + "}";
}

}  // namespace

Json toJson(CWsdlParser& parser, bool types) {
  std::stringstream text;
  writeWsdlJson(parser, types, text);
  return Json::parse(text);
}

std::string resolved(CWsdlParser& parser) {
  const Json json = toJson(parser, true);
  return shortForm(json["ports"][0]["binding"]["operations"][0]["input"]["parts"][0]["resolved"]);
}

std::string resolved(const std::string& document, bool backwardCompatible) {
  CWsdlParser parser;
  parser.SetBackwardCompatible70(backwardCompatible);
  parse(parser, document);
  return resolved(parser);
}

}  // namespace wsdl
