#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "ztservice/Export.h"

namespace ztservice {

/// What goes into a request and comes out of an answer, as JSON would say it: null, a boolean, a number, a
/// text, a list, or members by name in their order.
///
///     call::Value order;
///     order["item"]["id"] = call::Value::number("7");
///     order["item"]["@currency"] = "EUR";
///
/// An element is an object of its members; "@name" is an attribute, "$" the text of simple content, "$type"
/// the type that stands in; a list is what repeats; null is a nil.
///
/// - Shape: texts are UTF-8. A number is kept as it is written, so that a decimal of any length stays exact.
/// - Limits: as deep as it is built; copying, comparing and giving up use no stack for the depth.
namespace call {

class ZTSERVICE_API Value {
 public:
  enum class Kind { null, boolean, number, text, list, object };
  using List = std::vector<Value>;
  using Member = std::pair<std::string, Value>;
  using Object = std::vector<Member>;

  Value() noexcept = default;
  explicit Value(bool value) noexcept : content_(value) {}
  Value(std::string text) : content_(std::move(text)) {}
  Value(std::string_view text) : content_(std::string(text)) {}
  Value(const char* text) : content_(std::string(text)) {}
  Value(List list) : content_(std::move(list)) {}
  Value(Object object) : content_(std::move(object)) {}
  /// \param text as it will stand in the message; what is no number of JSON is "INF", "-INF" or "NaN".
  static Value number(std::string text);

  Value(const Value& other);
  Value(Value&& other) noexcept = default;
  Value& operator=(const Value& other);
  Value& operator=(Value&& other) noexcept;
  ~Value();

  Kind kind() const noexcept;
  bool isNull() const noexcept { return kind() == Kind::null; }

  /// Errors: std::bad_variant_access where it is of another kind.
  bool boolean() const { return std::get<bool>(content_); }
  /// Of a text or a number.
  const std::string& text() const;
  const List& list() const { return std::get<List>(content_); }
  List& list() { return std::get<List>(content_); }
  const Object& object() const { return std::get<Object>(content_); }
  Object& object() { return std::get<Object>(content_); }

  /// A member, null where there is none or this is no object.
  const Value* find(std::string_view name) const noexcept;
  Value* find(std::string_view name) noexcept;
  /// A member, made where there is none; a null becomes an object. Errors: std::bad_variant_access where it
  /// is of another kind.
  Value& operator[](std::string_view name);
  /// Appends one more under a name: the second makes a list of them.
  void add(std::string_view name, Value value);

  friend ZTSERVICE_API bool operator==(const Value& left, const Value& right);

 private:
  struct Number {
    std::string text;
  };
  // Of a list or an object: what it has, and its first and last value, where it has any.
  size_t size() const noexcept;
  // Whether nothing inside has anything inside.
  bool isShallow() const noexcept;
  Value& first() noexcept;
  Value takeLast() noexcept;

  std::variant<std::monostate, bool, Number, std::string, List, Object> content_;
};

}  // namespace call
}  // namespace ztservice
