#pragma once

#include <ostream>
#include <string>

#include "ztclient/answers/JsonWriter.h"
#include "ztservice/call/Answer.h"

/// What a service answered, for people and programs.
namespace callAnswer {

/// A value as JSON; numbers as they came.
void writeJson(const ztservice::call::Value& value, JsonWriter& json);
std::string toLine(const ztservice::call::Value& value);

/// The values of an answer; headers, where there are some, under "$headers".
void writeJson(const ztservice::call::Answer& answer, JsonWriter& json);
/// A line for each text, number, boolean and null: where it is, and what.
void writeTable(const ztservice::call::Answer& answer, std::ostream& out);

/// "Server: no such order (http://orders.example)".
std::string faultText(const ztservice::call::AnswerFault& fault);

}  // namespace callAnswer
