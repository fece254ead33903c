#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "ztservice/Service.h"
#include "ztservice/call/Content.h"
#include "ztservice/call/Enclosure.h"
#include "ztservice/call/SimpleValue.h"
#include "ztservice/call/XmlText.h"

namespace ztservice::call {

inline constexpr const char* onlySimpleOfFile = "only a value of a simple type can come out of a file";

// Something that is written as an element.
struct Declared {
  Name name;
  TypeReference type;
  bool nillable = false;
  bool isAbstract = false;
  std::optional<std::string_view> defaultValue;
  std::optional<std::string_view> fixedValue;
  std::vector<Name> substitutes;
  std::string_view error;

  static Declared of(const Element& element);
  // With what a global element that it refers to says of itself.
  static Declared of(const Member& member, const Service& service);
};

// Values as XML, checked against their types on the way: one pass does both.
class MessageWriter {
 public:
  // The service outlives it.
  explicit MessageWriter(const Service& service) : service_(service), simple_(service) {}

  // With types and arrays as a SOAP encoding has them from now on; as schemas say for an empty one.
  void encode(std::string_view encoding) { encoding_ = encoding; }
  // Where files and what goes beside the message are from now on; it outlives the writer. Without one there
  // are none.
  void enclose(Enclosure& enclosure) { enclosure_ = &enclosure; }

  // \param step how findings call it: "order".
  void element(const Declared& what, const Value& value, const std::string& step);
  // What is inside an element of a type, without the element. Nothing is written for attributes.
  void content(const TypeReference& type, const Value& value);
  // A value of a simple type, as text; empty for what is none.
  std::string simpleText(const TypeReference& type, const Value& value, const std::string& step);
  // What goes beside the message by itself. \param mediaType unless the value says another.
  MimePart attachment(const TypeReference& type, const Value& value, std::string_view mediaType,
                      const std::string& step);

  XmlText& xml() noexcept { return xml_; }
  Findings& findings() noexcept { return findings_; }

 private:
  class Step;
  static constexpr size_t deepest = 200;  // elements inside each other: what is deeper is no message

  Declared declared(const Placed& placed) const;
  bool standIn(Declared& what, const Value& value);
  const Type* typeOf(const Declared& what, const Value& value, bool& isOther);
  const Type* otherType(const Type* declared, std::string_view name);
  bool isDerived(const Type* type, const Type& base) const;
  std::vector<std::string> standInsOf(const Type& type) const;
  void filledIn(const Declared& what);
  void nil(const Declared& what, const Type* type, const Value& value);
  void filled(const Declared& what, const Type* type, bool isOther, const Value& value);
  void typeAttribute(const Type& type);
  void attributes(const Type& type, const Value& value);
  void leftOver(const Type& type, const Value& value);
  void inside(const Declared& what, const Type* type, const Value& value);
  void complex(const Type& type, const Value& value);
  bool sequence(const Type& type, const Value& value);
  bool isPlainSequence(const Type& type);
  void simpleContent(const Type& type, const Value& value);
  void mixed(const Type& type, const Value& value);
  void place(const Placed& placed);
  void wildcard(const Placed& placed);
  void untyped(const Value& value);
  void untypedAttributes(const Value& value);
  void items(const Type& type, const Value& value);
  void itemsOf(const TypeReference& item, std::string_view itemName, std::string_view dimensions,
               const Value& value, bool isEncoded);
  std::string textOf(const Type& type, const Value& value);
  bool enclosed(const Type& type, const Value& value);
  std::string fileOf(const Value& value);
  std::string mediaTypeOf(const Value& value, std::string_view otherwise);
  void include(MimePart part);
  std::string plainText(const Value& value);
  void checkText(std::string_view text);
  void checkFixed(const Declared& what, const Type& type, const std::string& text);
  void complain(std::string text) { findings_.add(path_, std::move(text)); }

  const Service& service_;
  SimpleValues simple_;
  XmlText xml_;
  Findings findings_;
  std::string_view encoding_;
  Enclosure* enclosure_ = nullptr;
  std::unordered_map<const Type*, bool> plainSequences_;
  std::string path_;
  size_t depth_ = 0;
};

// A step of the path, as long as something inside is written.
class MessageWriter::Step {
 public:
  Step(MessageWriter& writer, std::string_view step) : writer_(writer), length_(writer.path_.size()) {
    if (length_ > 0 && !step.empty() && !step.starts_with('[')) writer.path_ += '.';
    writer.path_ += step;
    ++writer.depth_;
  }
  ~Step() {
    while (writer_.path_.size() > length_) writer_.path_.pop_back();
    --writer_.depth_;
  }
  Step(const Step&) = delete;
  Step& operator=(const Step&) = delete;

  // Says so once.
  bool isTooDeep() const {
    if (writer_.depth_ <= deepest) return false;
    writer_.findings_.addFatal(writer_.path_, "is more than " + std::to_string(deepest) + " elements deep");
    return true;
  }

 private:
  MessageWriter& writer_;
  size_t length_;
};

}  // namespace ztservice::call
