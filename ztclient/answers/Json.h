#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "tovin/values/BitsetValue.h"

/// JSON with the keys in the order in which they are set.
using Json = nlohmann::ordered_json;

/// One line of JSON, or an indented document. Text is UTF-8; a surrogate that stands alone in it, in three
/// bytes, is written as an escape.
std::string toText(const Json& json, int indent = -1);

/// A name with control characters in it is escaped like a text, so that what is printed stays one line.
std::string onOneLine(std::string name);

/// "NaN", "Infinity" and "-Infinity" are texts.
Json numberOf(double number);

/// The numbers of the bits that are on.
Json bitsOn(const tovin::BitsetValue& bits);
