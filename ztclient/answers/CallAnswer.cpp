#include "ztclient/answers/CallAnswer.h"

#include <algorithm>
#include <sstream>
#include <vector>

#include "tovinCore/Base64.h"
#include "ztclient/log/LogTable.h"

namespace {

using ztservice::call::Answer;
using ztservice::call::MimePart;
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

std::string base64Of(const std::string& bytes) {
  std::string text;
  tovin::base64::encode(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), text);
  return text;
}

template <class Content>
std::string lineOf(const Content& content) {
  std::ostringstream out;
  {
    JsonWriter json(out, JsonWriter::Layout::oneLine);
    callAnswer::writeJson(content, json);
  }
  return out.str();
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

std::string callAnswer::toLine(const Value& value) { return lineOf(value); }

std::string callAnswer::toLine(const Answer& answer) { return lineOf(answer); }

Value callAnswer::attachmentsOf(const Answer& answer) {
  if (answer.attachments.empty()) return {};
  const bool areNamed =
      std::ranges::none_of(answer.attachments, [](const MimePart& part) { return part.part.empty(); });
  Value named{Value::Object{}};
  Value::List list;
  for (const MimePart& part : answer.attachments) {
    Value one{Value::Object{}};
    if (!areNamed && !part.id.empty()) one["id"] = part.id;
    if (!areNamed && !part.fileName.empty()) one["name"] = part.fileName;
    if (!part.mediaType.empty()) one["$mediaType"] = part.mediaType;
    if (part.file.empty())
      one["$"] = base64Of(part.bytes);
    else
      one["$file"] = part.file;
    if (areNamed)
      named[part.part] = std::move(one);
    else
      list.push_back(std::move(one));
  }
  return areNamed ? named : Value(std::move(list));
}

void callAnswer::writeJson(const Answer& answer, JsonWriter& json) {
  const Value attachments = attachmentsOf(answer);
  if (answer.headers.isNull() && attachments.isNull()) {
    writeJson(answer.values, json);
    return;
  }
  json.beginObject();
  if (!answer.headers.isNull()) writeJson(answer.headers, json.key("$headers"));
  if (!attachments.isNull()) writeJson(attachments, json.key("$attachments"));
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
  path = "$attachments";
  const Value attachments = attachmentsOf(answer);
  if (!attachments.isNull()) collect(attachments, path, rows);
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
