#include "ztclient/answers/JsonWriter.h"

#include "tovinCore/Utf8.h"

JsonWriter::~JsonWriter() { out_.write(room_.data(), static_cast<std::streamsize>(room_.size())); }

void JsonWriter::flushIfFull() {
  constexpr size_t full = 1 << 16;
  if (room_.size() < full) return;
  out_.write(room_.data(), static_cast<std::streamsize>(room_.size()));
  room_.clear();
}

void JsonWriter::newLine() {
  if (isOneLine_) return;
  room_ += '\n';
  room_.append(depth_, ' ');
}

void JsonWriter::begin() {
  if (afterKey_) {
    afterKey_ = false;
    return;
  }
  if (!isEmpty_) room_ += ',';
  if (depth_ > 0) newLine();
  isEmpty_ = false;
  flushIfFull();
}

void JsonWriter::open(char bracket) {
  begin();
  room_ += bracket;
  ++depth_;
  isEmpty_ = true;
}

void JsonWriter::close(char bracket) {
  --depth_;
  if (!isEmpty_) newLine();
  room_ += bracket;
  isEmpty_ = false;
}

JsonWriter& JsonWriter::key(std::string_view name) {
  begin();
  quote(name);
  room_ += isOneLine_ ? ":" : ": ";
  afterKey_ = true;
  return *this;
}

void JsonWriter::text(std::string_view value) {
  begin();
  bool cutShort = false;
  if (tovin::asciiPrefix(value) == value.size() || tovin::isValidUtf8(value, cutShort)) {
    quote(value);
  } else {
    quote(tovin::wideToUtf8(tovin::utf8ToWide(value)));
  }
}

void JsonWriter::number(uint64_t value) {
  begin();
  room_ += std::to_string(value);
}

void JsonWriter::numberAs(std::string_view digits) {
  begin();
  room_ += digits;
}

void JsonWriter::flag(bool value) {
  begin();
  room_ += value ? "true" : "false";
}

void JsonWriter::null() {
  begin();
  room_ += "null";
}

void JsonWriter::quote(std::string_view value) {
  constexpr char digits[] = "0123456789abcdef";
  room_ += '"';
  for (const char c : value) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      room_ += '\\';
      room_ += c;
    } else if (byte >= 0x20 && byte != 0x7F) {
      room_ += c;
    } else if (c == '\n') {
      room_ += "\\n";
    } else if (c == '\t') {
      room_ += "\\t";
    } else if (c == '\r') {
      room_ += "\\r";
    } else {
      room_ += "\\u00";
      room_ += digits[byte >> 4];
      room_ += digits[byte & 0xF];
    }
  }
  room_ += '"';
}
