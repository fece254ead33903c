#include "tests/ztservice/Services.h"

#include <sstream>

#include "ztclient/answers/ServiceJson.h"

namespace testsupport {

ztservice::Service loadFiles(const Files& files, ztservice::Options options) {
  options.readFile = [&](const std::string& path, std::string& bytes) {
    const auto found = files.find(path);
    bytes = found == files.end() ? "No such file or directory" : found->second;
    return found != files.end();
  };
  return ztservice::load("main.wsdl", options);
}

Json answerOf(const ztservice::Service& service) {
  std::ostringstream out;
  writeServiceJson(service, out);
  return Json::parse(out.str());
}

std::string definitionsOf(const std::string& schema, const std::string& attributes) {
  return R"(<wsdl:definitions xmlns:wsdl="http://schemas.xmlsoap.org/wsdl/" targetNamespace="urn:t" xmlns:t="urn:t"
 xmlns:s="http://schemas.xmlsoap.org/wsdl/soap/" xmlns:xs="http://www.w3.org/2001/XMLSchema"
 xmlns:enc="http://schemas.xmlsoap.org/soap/encoding/" xmlns:enc12="http://www.w3.org/2003/05/soap-encoding">
<wsdl:types><xs:schema targetNamespace="urn:t" )" +
         attributes + '>' + schema + R"(</xs:schema></wsdl:types>
<wsdl:message name="m"><wsdl:part name="p" type="t:T"/></wsdl:message>
<wsdl:portType name="P"><wsdl:operation name="o"><wsdl:input message="t:m"/></wsdl:operation></wsdl:portType>
<wsdl:binding name="B" type="t:P"><s:binding/><wsdl:operation name="o"><wsdl:input><s:body/></wsdl:input>
</wsdl:operation></wsdl:binding>
<wsdl:service name="S"><wsdl:port name="p" binding="t:B"/></wsdl:service></wsdl:definitions>)";
}

namespace {

std::string text(const Json& json, const char* key) {
  return json.contains(key) ? json[key].get<std::string>() : "";
}

std::string referenceOf(const Json& json) {
  if (json.contains("anonymous")) return '[' + summaryOf(json["anonymous"]) + ']';
  return text(json, "type").empty() ? "-" : text(json, "type");
}

// What is there only where it applies, with its value.
std::string extras(const Json& json, std::initializer_list<const char*> keys) {
  std::string out;
  for (const char* key : keys) {
    if (json.contains(key) && json[key] != false)
      out += std::string(" ") + key + '=' + (json[key].is_string() ? text(json, key) : json[key].dump());
  }
  return out;
}

std::string namesOf(const Json& list, const char* key) {
  std::string out;
  for (const Json& one : list) out += (out.empty() ? "" : ",") + text(one, key);
  return out;
}

std::string boundsOf(const Json& member) {
  const Json& max = member["max"];
  return ' ' + member["min"].dump() + ".." + (max.is_string() ? "*" : max.dump());
}

std::string memberOf(const Json& member) {
  if (member.contains("error")) return text(member, "name") + '!';
  const std::string name = member.contains("any") ? '*' + text(member, "any") + '/' + text(member, "process")
                                                  : (text(member, "namespace").empty() ? "" : "q:") +
                                                        text(member, "name") + ':' + referenceOf(member);
  return name + boundsOf(member) + extras(member, {"nillable", "ref", "choice", "group", "default", "fixed"});
}

std::string attributeOf(const Json& attribute) {
  if (attribute.contains("error")) return '@' + text(attribute, "name") + '!';
  return (text(attribute, "namespace").empty() ? "@" : "@q:") + text(attribute, "name") + ':' +
         referenceOf(attribute) + (attribute["use"] == "required" ? "!" : "") +
         extras(attribute, {"default", "fixed"});
}

std::string simpleOf(const Json& type) {
  std::string out = ' ' + text(type, "variety") + '/' + text(type, "primitive");
  if (type.contains("item")) out += " of " + referenceOf(type["item"]);
  if (type.contains("memberTypes")) {
    for (const Json& one : type["memberTypes"]) out += " |" + referenceOf(one);
  }
  if (type.contains("facets")) {
    for (const Json& one : type["facets"]) out += ' ' + text(one, "name") + '=' + text(one, "value");
  }
  if (type.contains("values")) out += ' ' + type["values"].dump();
  return out;
}

}  // namespace

std::string summaryOf(const Json& type) {
  std::string out = text(type, "kind") + ' ' + text(type, "name");
  if (type.contains("error")) return out + '!';
  if (!text(type, "base").empty()) out += '(' + text(type, "base") + ')';
  if (type.contains("anonymous") && text(type, "kind") != "array")
    out += '[' + summaryOf(type["anonymous"]) + ']';
  if (type["kind"] == "array")
    return out + ' ' + text(type, "itemName") + ':' + referenceOf(type) + text(type, "dimensions");
  if (type["kind"] != "complex") return out + simpleOf(type);
  if (type.contains("abstract")) out += " abstract=" + namesOf(type["derived"], "type");
  if (type.contains("mixed")) out += " mixed";
  if (type.contains("content")) out += " =" + referenceOf(type["content"]);
  std::string inside;
  for (const Json& member : type["members"]) inside += (inside.empty() ? "" : "; ") + memberOf(member);
  for (const Json& attribute : type["attributes"])
    inside += (inside.empty() ? "" : "; ") + attributeOf(attribute);
  if (type.contains("anyAttribute"))
    inside += (inside.empty() ? "@*" : "; @*") + text(type["anyAttribute"], "namespace") + '/' +
              text(type["anyAttribute"], "process");
  return out + " {" + inside + '}';
}

}  // namespace testsupport
