#include "ztclient/answers/CallAnswer.h"

#include <sstream>
#include <vector>

#include "ztclient/log/LogTable.h"

namespace {

using ztservice::call::Answer;
using ztservice::call::Value;

std::string plain(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::boolean:
      return value.boolean() ? "true" : "false";
    case Value::Kind::number:
    case Value::Kind::text:
      return value.text();
    default:
      return "null";
  }
}

// Answers are no deeper than their limit.
void collect(const Value& value, std::string& path, std::vector<TableRow>& rows) {
  const size_t length = path.size();
  if (value.kind() == Value::Kind::object) {
    for (const auto& [name, one] : value.object()) {
      path += (length > 0 ? "." : "") + name;
      collect(one, path, rows);
      path.resize(length);
    }
    return;
  }
  if (value.kind() != Value::Kind::list) {
    rows.push_back({path, plain(value)});
    return;
  }
  for (size_t i = 0; i < value.list().size(); ++i) {
    path += '[' + std::to_string(i) + ']';
    collect(value.list()[i], path, rows);
    path.resize(length);
  }
}

void writeMembers(const Value& value, JsonWriter& json) {
  for (const auto& [name, one] : value.object()) callAnswer::writeJson(one, json.key(name));
}

}  // namespace

void callAnswer::writeJson(const Value& value, JsonWriter& json) {
  switch (value.kind()) {
    case Value::Kind::null:
      json.null();
      break;
    case Value::Kind::boolean:
      json.flag(value.boolean());
      break;
    case Value::Kind::number:
      json.numberAs(value.text());
      break;
    case Value::Kind::text:
      json.text(value.text());
      break;
    case Value::Kind::list:
      json.beginArray();
      for (const Value& one : value.list()) writeJson(one, json);
      json.endArray();
      break;
    case Value::Kind::object:
      json.beginObject();
      writeMembers(value, json);
      json.endObject();
      break;
  }
}

std::string callAnswer::toLine(const Value& value) {
  std::ostringstream out;
  {
    JsonWriter json(out, JsonWriter::Layout::oneLine);
    writeJson(value, json);
  }
  return out.str();
}

void callAnswer::writeJson(const Answer& answer, JsonWriter& json) {
  if (answer.headers.isNull()) {
    writeJson(answer.values, json);
    return;
  }
  json.beginObject();
  writeJson(answer.headers, json.key("$headers"));
  if (answer.values.kind() == Value::Kind::object)
    writeMembers(answer.values, json);
  else
    writeJson(answer.values, json.key("$"));
  json.endObject();
}

void callAnswer::writeTable(const Answer& answer, std::ostream& out) {
  std::vector<TableRow> rows;
  std::string path;
  collect(answer.values, path, rows);
  path = "$headers";
  if (!answer.headers.isNull()) collect(answer.headers, path, rows);
  tableText::Aligned table;
  for (const TableRow& row : rows) table.see(row);
  for (const TableRow& row : rows) table.write(out, row);
}

std::string callAnswer::faultText(const ztservice::call::AnswerFault& fault) {
  std::string text = fault.code.empty() ? "a fault" : fault.code;
  if (!fault.reason.empty()) text += ": " + fault.reason;
  if (!fault.actor.empty()) text += " (" + fault.actor + ')';
  return text;
}
