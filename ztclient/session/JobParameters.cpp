#include "ztclient/session/JobParameters.h"

#include <string_view>

#include "tovin/values/DoubleValue.h"
#include "tovin/values/IntegerValue.h"
#include "tovin/values/StringArrayValue.h"
#include "tovin/values/StringValue.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/node/CBaseNode.h"

namespace {

constexpr std::string_view arrayMark = "[]";

struct Example {
  std::string_view of;
  const wchar_t* text;
  const wchar_t* another;
};

// For members that the bundled service has, then for the types of any service.
constexpr Example byName[] = {{"protocol", L"Find Similar", L""},
                              {"inputFile", L"compounds.txt", L""},
                              {"priority", L"normal", L""},
                              {"columns", L"name", L"mass"}};
constexpr Example byType[] = {{"boolean", L"true", L"false"},
                              {"double", L"0.85", L"0.9"},
                              {"float", L"0.85", L"0.9"},
                              {"decimal", L"0.85", L"0.9"},
                              {"int", L"25", L"26"},
                              {"integer", L"25", L"26"},
                              {"long", L"25", L"26"},
                              {"short", L"25", L"26"},
                              {"dateTime", L"2024-05-17T09:30:00Z", L"2024-05-18T09:30:00Z"},
                              {"date", L"2024-05-17", L"2024-05-18"}};
constexpr Example anyText = {"", L"example", L"another"};

std::string textOf(const Json& json, const char* key) { return json.value(key, std::string()); }

std::string localType(const Json& member) {
  std::string type = textOf(member, "type");
  type = type.substr(type.find(':') + 1);
  return type.substr(0, type.find(arrayMark));
}

bool repeats(const Json& member) { return textOf(member, "type").ends_with(arrayMark); }

template <size_t count>
const Example* find(const Example (&examples)[count], const std::string& key) {
  for (const Example& example : examples) {
    if (example.of == key) return &example;
  }
  return nullptr;
}

const Example& exampleFor(const std::string& name, const std::string& type) {
  if (const Example* example = find(byName, name)) return *example;
  const Example* example = find(byType, type);
  return example ? *example : anyText;
}

// The class that keeps values of a type best; everything but numbers is text.
const tovin::ClassTag& classFor(const std::string& type) {
  const bool real = type == "double" || type == "float" || type == "decimal";
  const bool integer = type == "int" || type == "integer" || type == "long" || type == "short";
  if (real) return tovin::DoubleValue::Tag;
  return integer ? tovin::IntegerValue::Tag : tovin::StringValue::Tag;
}

void define(tovin::iPropertyCollection& properties, const std::string& name, const Json& member) {
  if (properties.isDefined(tovin::utf8ToWide(name).c_str())) return;  // alternatives of one name
  const std::string type = localType(member);
  const Example& example = exampleFor(name, type);
  tovin::iProperty* property = properties.define(tovin::utf8ToWide(name).c_str(), example.text, 0);
  if (!repeats(member)) return property->CoerceToType(classFor(type));
  property->CoerceToType(tovin::StringArrayValue::Tag);
  property->appendValue(example.another);
}

size_t membersIn(const Json& operation) {
  size_t count = 0;
  for (const Json& part : operation["input"]["parts"]) {
    count += 1 + (part["resolved"].contains("elements") ? part["resolved"]["elements"].size() : 0);
  }
  return count;
}

void fill(tovin::iNode& node, const Json& part) {
  node.setName(tovin::utf8ToWide(textOf(part, "name")).c_str());
  tovin::iPropertyCollection& properties = *node.getProperties();
  const Json& resolved = part["resolved"];
  if (textOf(resolved, "kind") != "complex") return define(properties, textOf(part, "name"), part);
  for (const Json& member : resolved["elements"]) define(properties, textOf(member, "name"), member);
}

}  // namespace

Json jobs::operationWithMostMembers(const Json& service) {
  const Json* best = nullptr;
  for (const Json& port : service["ports"]) {
    for (const Json& operation : port["binding"]["operations"]) {
      if (!best || membersIn(operation) > membersIn(*best)) best = &operation;
    }
  }
  return best ? *best : Json();
}

tovin::Ptr<tovin::iNode> jobs::treeFor(const Json& operation) {
  tovin::Ptr<tovin::iNode> job(CBaseNode::allocate());
  job->setName(L"job");
  job->getProperties()->define(L"operation", tovin::utf8ToWide(textOf(operation, "name")).c_str(), 0);
  for (const Json& part : operation["input"]["parts"]) {
    tovin::iNode* child = CBaseNode::allocate();
    job->appendChild(child);
    fill(*child, part);
  }
  return job;
}
