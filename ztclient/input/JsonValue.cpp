#include "ztclient/input/JsonValue.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "ztclient/arguments/Misuse.h"

namespace {

using ztservice::call::Value;
using Json = nlohmann::json;

// Takes the events of the parser, which keeps the open brackets in a list of its own.
class Builder : public nlohmann::json_sax<Json> {
 public:
  Builder(std::string_view text, const std::string& name) : text_(text), name_(name) {}

  bool null() override { return add(Value()); }
  bool boolean(bool value) override { return add(Value(value)); }
  bool number_integer(number_integer_t value) override { return add(Value::number(std::to_string(value))); }
  bool number_unsigned(number_unsigned_t value) override { return add(Value::number(std::to_string(value))); }
  bool number_float(number_float_t, const string_t& text) override { return add(Value::number(text)); }
  bool string(string_t& text) override { return add(Value(std::move(text))); }
  bool binary(binary_t&) override { return false; }
  bool start_object(size_t) override { return open(Value(Value::Object{})); }
  bool start_array(size_t) override { return open(Value(Value::List{})); }
  bool end_object() override { return close(); }
  bool end_array() override { return close(); }

  bool key(string_t& name) override {
    Value& inside = open_.back();
    if (inside.find(name)) fail("\"" + name + "\" is there twice", 0);
    inside.object().emplace_back().first = std::move(name);
    return true;
  }

  bool parse_error(size_t position, const std::string&, const nlohmann::detail::exception& error) override {
    // The library's own text says where in its own way.
    const std::string text = error.what();
    const size_t reason = text.find(": ");
    fail(reason == text.npos ? text : text.substr(reason + 2), position);
  }

  Value take() { return std::move(result_); }

 private:
  [[noreturn]] void fail(const std::string& reason, size_t position) const {
    const std::string_view before = text_.substr(0, position > 0 ? position - 1 : 0);
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const size_t column = before.size() - (before.rfind('\n') + 1) + 1;
    std::string where = name_;
    if (position > 0) where += ':' + std::to_string(line) + ':' + std::to_string(column);
    throw tovin::Exception(tovin::utf8ToWide(where + ": " + reason).c_str());
  }

  bool add(Value value) {
    if (open_.empty()) {
      result_ = std::move(value);
      return true;
    }
    Value& inside = open_.back();
    if (inside.kind() == Value::Kind::list)
      inside.list().push_back(std::move(value));
    else
      inside.object().back().second = std::move(value);
    return true;
  }

  bool open(Value value) {
    open_.push_back(std::move(value));
    return true;
  }

  bool close() {
    Value done = std::move(open_.back());
    open_.pop_back();
    return add(std::move(done));
  }

  std::string_view text_;
  const std::string& name_;
  std::vector<Value> open_;
  Value result_;
};

[[noreturn]] void refuse(const std::string& field, const std::string& text) {
  throw Misuse('"' + field + "\" " + text);
}

// A FIELD before its end, a piece at a time: names, and indexes in brackets.
class FieldPath {
 public:
  explicit FieldPath(const std::string& field) : field_(field) {}

  // Where the path ends: at "=" or ":=" outside of braces.
  size_t end() const {
    size_t depth = 0;
    for (size_t i = 0; i < field_.size(); ++i) {
      if (field_[i] == '{') ++depth;
      if (field_[i] == '}' && depth > 0) --depth;
      if (field_[i] == '=' && depth == 0) return i > 0 && field_[i - 1] == ':' ? i - 1 : i;
    }
    refuse(field_, "is no FIELD=TEXT or FIELD:=JSON");
  }

  Value* find(Value& values) const {
    const std::string_view path = std::string_view(field_).substr(0, end());
    Value* at = &values;
    for (size_t i = 0; i < path.size();) {
      if (path[i] == '[') {
        at = &item(*at, path, i);
        continue;
      }
      if (i > 0 && path[i] == '.') ++i;
      at = &member(*at, path, i);
    }
    return path.empty() ? nullptr : at;
  }

 private:
  Value& member(Value& of, std::string_view path, size_t& i) const {
    const size_t from = i;
    for (size_t depth = 0; i < path.size(); ++i) {
      if (path[i] == '{') ++depth;
      if (path[i] == '}' && depth > 0) --depth;
      if (depth == 0 && (path[i] == '.' || path[i] == '[')) break;
    }
    if (i == from) refuse(field_, "has an empty name");
    if (!of.isNull() && of.kind() != Value::Kind::object)
      refuse(field_, "leads through what is no object, at " + std::string(path.substr(0, from)));
    return of[path.substr(from, i - from)];
  }

  Value& item(Value& of, std::string_view path, size_t& i) const {
    const size_t close = path.find(']', i);
    size_t index = 0;
    const char* const end = path.data() + std::min(close, path.size());
    const auto read = std::from_chars(path.data() + i + 1, end, index);
    if (close == path.npos || read.ec != std::errc() || read.ptr != end)
      refuse(field_, "has no index in its brackets");
    i = close + 1;
    if (i < path.size() && path[i] != '.' && path[i] != '[') refuse(field_, "goes on behind an index");
    if (of.isNull()) of = Value(Value::List{});
    if (of.kind() != Value::Kind::list) refuse(field_, "has an index for what is no list");
    if (index > of.list().size())
      refuse(field_, "leaves a gap: there are " + std::to_string(of.list().size()) + " before it");
    if (index == of.list().size()) of.list().emplace_back();
    return of.list()[index];
  }

  const std::string& field_;
};

}  // namespace

Value readJson(std::string_view text, const std::string& name) {
  Builder builder(text, name);
  constexpr bool isStrict = true, hasComments = true;
  Json::sax_parse(text.begin(), text.end(), &builder, Json::input_format_t::json, isStrict, hasComments);
  return builder.take();
}

void FieldSetter::set(const std::string& field) {
  const FieldPath path(field);
  const size_t end = path.end();
  const bool isJson = field[end] == ':';
  std::string given = field.substr(end + (isJson ? 2 : 1));
  Value value = isJson ? readJson(given, '"' + field.substr(0, end) + '"') : Value(std::move(given));
  Value* place = path.find(values_);
  if (!place) refuse(field, "has an empty name");
  const std::string name = field.substr(0, end);
  if (std::find(seen_.begin(), seen_.end(), name) == seen_.end()) {
    seen_.push_back(name);
    *place = std::move(value);
    return;
  }
  if (place->kind() != Value::Kind::list) {
    Value::List list;
    list.push_back(std::move(*place));
    *place = Value(std::move(list));
  }
  place->list().push_back(std::move(value));
}
