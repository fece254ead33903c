#pragma once

#include <string>
#include <string_view>

#include "ztservice/Name.h"
#include "ztservice/call/Lexical.h"
#include "ztservice/call/Value.h"
#include "ztservice/call/XmlText.h"
#include "ztservice/schema/Builtins.h"

// What values are, and the names in them.
namespace ztservice::call {

inline constexpr Name typeName{instanceSpace, "type"};
inline constexpr Name nilName{instanceSpace, "nil"};

inline bool isObject(const Value& value) { return value.kind() == Value::Kind::object; }

inline bool isList(const Value& value) { return value.kind() == Value::Kind::list; }

inline bool isNil(const Value& value) {
  if (value.isNull()) return true;
  const Value* text = value.find("$");
  return text && text->isNull();
}

inline const char* kindOf(const Value& value) {
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

// "{space}local", the local name alone without a namespace.
inline std::string keyOf(const Name& name) {
  return name.space.empty() ? std::string(name.local)
                            : '{' + std::string(name.space) + '}' + std::string(name.local);
}

// "{space}local", and of XML Schema "xs:int" too.
inline Name nameOf(std::string_view text) {
  if (text.starts_with('{') && text.find('}') != std::string_view::npos)
    return {text.substr(1, text.find('}') - 1), text.substr(text.find('}') + 1)};
  for (const std::string_view prefix : {"xs:", "xsd:"}) {
    if (text.starts_with(prefix)) return {schema::schemaNamespace, text.substr(prefix.size())};
  }
  return {{}, text};
}

// What a parser may call a local name.
inline bool isName(std::string_view text) {
  size_t at = 0;
  if (text.empty() || unfitAt(text) != std::string_view::npos) return false;
  if (!lexical::isNameStart(lexical::nextCharacter(text, at)) || text.front() == ':') return false;
  while (at < text.size()) {
    const uint32_t c = lexical::nextCharacter(text, at);
    if (c == ':' || !lexical::isNameCharacter(c)) return false;
  }
  return true;
}

inline std::string_view attributeKey(std::string_view key) { return key.substr(1); }

}  // namespace ztservice::call
