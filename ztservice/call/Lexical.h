#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The texts of XML Schema's simple types (part 2), and how their values compare.
namespace ztservice::call::lexical {

// "preserve", "replace" or "collapse", as the type of that name, or else its primitive one, has it.
std::string_view whiteSpaceOf(std::string_view type, std::string_view primitive);
std::string normalized(std::string_view text, std::string_view whiteSpace);

// Whether a normalized text is one of the built-in type of that name; its primitive type where it has no
// rule of its own.
bool isOf(std::string_view type, std::string_view primitive, std::string_view text);

// A text of the built-in type of that name.
std::string_view exampleOf(std::string_view type, std::string_view primitive);

// How two valid texts compare; unordered for those of which nobody can say, as times with and without zone,
// and of types without order.
std::partial_ordering compare(std::string_view primitive, std::string_view left, std::string_view right);

// A number as JSON has it: no sign or zero too much in front of it, digits on both sides of a point.
bool isJsonNumber(std::string_view text);

// Of a decimal: without signs and zeros that mean nothing.
size_t totalDigits(std::string_view text);
size_t fractionDigits(std::string_view text);

// Characters; bytes of binary types.
size_t lengthOf(std::string_view primitive, std::string_view text);

// The limits of a built-in integer type; empty where it has none.
struct Range {
  std::string_view least;
  std::string_view most;
};
Range rangeOf(std::string_view type);

// One code point; 0xFFFD for what is no UTF-8. \param at moves behind it.
uint32_t nextCharacter(std::string_view text, size_t& at);
bool isNameStart(uint32_t c);
bool isNameCharacter(uint32_t c);

}  // namespace ztservice::call::lexical
