#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

/// Writes one JSON document piece by piece, indented as toText() does it with a blank a level: an answer may
/// be far longer than what it is made from.
///
///     JsonWriter json(out);
///     json.beginObject();
///     json.key("name").text("Order");
///     json.endObject();
///
/// - Errors: none of its own. What is no UTF-8 in a text becomes U+FFFD.
class JsonWriter {
 public:
  enum class Layout { indented, oneLine };
  explicit JsonWriter(std::ostream& out, Layout layout = Layout::indented)
      : out_(out), isOneLine_(layout == Layout::oneLine) {}
  JsonWriter(const JsonWriter&) = delete;
  JsonWriter& operator=(const JsonWriter&) = delete;
  ~JsonWriter();

  void beginObject() { open('{'); }
  void endObject() { close('}'); }
  void beginArray() { open('['); }
  void endArray() { close(']'); }

  JsonWriter& key(std::string_view name);
  void text(std::string_view value);
  void number(uint64_t value);
  /// \param digits a number as JSON has it.
  void numberAs(std::string_view digits);
  void flag(bool value);
  void null();

  /// A key with its value.
  void text(std::string_view name, std::string_view value) { key(name).text(value); }
  void number(std::string_view name, uint64_t value) { key(name).number(value); }
  void flag(std::string_view name, bool value) { key(name).flag(value); }

 private:
  void open(char bracket);
  void close(char bracket);
  void begin();
  void newLine();
  void quote(std::string_view value);
  void flushIfFull();

  std::ostream& out_;
  const bool isOneLine_;
  std::string room_;
  size_t depth_ = 0;
  bool isEmpty_ = true;
  bool afterKey_ = false;
};
