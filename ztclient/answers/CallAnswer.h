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
std::string toLine(const ztservice::call::Answer& answer);

/// What came beside an answer: by the parts of the message that it is, else a list.
ztservice::call::Value attachmentsOf(const ztservice::call::Answer& answer);

/// The values of an answer; headers and attachments, where there are some, under "$headers" and
/// "$attachments".
void writeJson(const ztservice::call::Answer& answer, JsonWriter& json);
/// A line for each text, number, boolean and null: where it is, and what.
void writeTable(const ztservice::call::Answer& answer, std::ostream& out);

/// "Server: no such order (http://orders.example)".
std::string faultText(const ztservice::call::AnswerFault& fault);

}  // namespace callAnswer
