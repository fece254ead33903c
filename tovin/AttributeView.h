#pragma once

#include <cstdint>
#include <string_view>

#include "tovin/BaseString.h"
#include "tovin/Export.h"
#include "tovin/iProperty.h"

namespace tovin {

/// A property of a node, or the node's value, as it stands: without an object being made of it.
///
/// - Ownership: all is borrowed until the node, its properties or their values change.
struct AttributeView {
  enum class Kind : uint8_t {
    nullText,
    text,
    nullValue,
    number,
    integer,
    /// A value that is an object.
    value,
    /// A property that is one; its flags are asked there.
    property
  };

  Kind kind = Kind::nullValue;
  /// How many bytes a unit of the text has: one while all are below U+0100, else two.
  uint8_t unit = 1;
  /// Flags of MetaDataFlags.
  uint8_t flags = 0;
  /// Of the text, in units.
  uint32_t length = 0;
  const wchar_t* name = nullptr;
  union {
    const void* units = nullptr;
    double number;
    int32_t integer;
    const Value* value;
    const iProperty* property;
  };

  static AttributeView of(const iProperty& property) {
    AttributeView view;
    view.kind = Kind::property;
    view.name = property.getName();
    view.property = &property;
    return view;
  }
  static AttributeView of(const Value& value) {
    AttributeView view;
    view.kind = Kind::value;
    view.value = &value;
    return view;
  }
  bool isObject() const noexcept { return kind >= Kind::value; }
  bool isNodeValue() const {
    const MetaDataFlags bits = kind == Kind::property ? property->getInfo()->getMetaDataFlags() : flags;
    return bits.has(MetaDataFlags::nodeValue);
  }
  /// Of a value or property that is an object.
  const Value& object() const { return kind == Kind::property ? property->getValue() : *value; }
  /// The text where a unit has one byte, and where it has two.
  std::string_view narrow() const noexcept { return {static_cast<const char*>(units), length}; }
  std::u16string_view wide() const noexcept { return {static_cast<const char16_t*>(units), length}; }
  /// Copies a text's units, `length` of them.
  void copyTo(wchar_t* out) const noexcept {
    if (unit == 1)
      for (char c : narrow()) *out++ = static_cast<wchar_t>(static_cast<unsigned char>(c));
    else
      for (char16_t c : wide()) *out++ = static_cast<wchar_t>(c);
  }
  /// As Value::getText() of the value.
  TOVIN_API WideString getText() const;
};

}  // namespace tovin
