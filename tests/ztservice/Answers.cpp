#include "tests/ztservice/Answers.h"

#include <sstream>

#include "ztclient/answers/ServiceJson.h"

namespace testsupport {

Json answerOf(const ztservice::Service& service) {
  std::ostringstream out;
  writeServiceJson(service, out);
  return Json::parse(out.str());
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
