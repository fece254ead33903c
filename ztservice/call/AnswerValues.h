#pragma once

#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ztservice/call/Answer.h"
#include "ztservice/call/AnswerTree.h"
#include "ztservice/call/SimpleValue.h"

namespace ztservice::call {

// Elements of an answer as values by their types.
class AnswerValues {
 public:
  using Element = AnswerTree::Element;

  AnswerValues(const Service& service, const AnswerTree& tree, const AnswerOptions& options, Answer& answer,
               std::span<const MimePart> parts)
      : service_(service), simple_(service), tree_(tree), options_(options), answer_(answer), parts_(parts) {}

  // Of what came beside the message, those that no binary value refers to.
  std::vector<MimePart> unusedParts() const;

  // A step of the path, and of the depth.
  class Step {
   public:
    Step(AnswerValues& reader, std::string_view step) : reader_(reader), length_(reader.path_.size()) {
      if (length_ > 0) reader.path_ += '.';
      reader.path_ += step;
      const AnswerLimits& limits = reader.options_.limits;
      if (++reader.depth_ > limits.depth)
        reader.fail("more than " + std::to_string(limits.depth) + " elements deep");
      if (++reader.elements_ > limits.elements)
        reader.fail("more than " + std::to_string(limits.elements) + " elements");
    }
    ~Step() {
      while (reader_.path_.size() > length_) reader_.path_.pop_back();
      --reader_.depth_;
    }
    Step(const Step&) = delete;
    Step& operator=(const Step&) = delete;

   private:
    AnswerValues& reader_;
    size_t length_;
  };

  [[noreturn]] void fail(const std::string& text) const;
  void doubt(const std::string& text);
  const Type* typeOf(const Name& element);
  void add(Value& to, std::string_view key, const Element& element, const Type* type, bool isList);
  // What no type knows: members are looked for one by one, so that there must not be too many.
  void addUnknown(Value& to, const Element& element);
  void unknown(const Element& element, Value& to);
  // \param mayBeMember whether "$type" tells another type than the declared one.
  Value value(const Element& given, const Type* declared, bool mayBeMember);

 private:
  // The element that a reference refers to; itself where it is none.
  const Element& target(const Element& element, std::vector<const Element*>& followed);
  Value valueOf(const Element& element, const Type* declared, bool mayBeMember);
  Value nilOf(const Element& element, const Type* type);
  void attributes(const Element& element, const Type* type, Value& out);
  static const Attribute* attributeOf(const Type* type, const Name& name);
  static bool hasAttribute(const Type* type, const Name& name);
  Value scalar(const Type& type, const Element& element);
  // What an element includes from beside the message; null for one that does not.
  const MimePart* included(const Element& element);
  Value contentOf(const MimePart& part);
  // Bytes that values take: those of an answer that does not repeat itself are never more than it has.
  void charge(uint64_t bytes);
  // Numbers and booleans as JSON has them, items of a list one by one.
  Value scalarOf(const Type& type, const Element& at, std::string_view given);
  Value atom(const Type& type, const Element& at, std::string_view text);
  // Of an array the items, whatever they are called.
  Value array(const Type& type, const Element& element);
  // Items of several dimensions, which come row by row: "2,3]" of SOAP 1.1, "2 3" of SOAP 1.2. As they are
  // where there are not as many.
  static Value::List inRows(Value::List items, std::string_view sizes);
  // An array inside an array.
  Value row(const Element& given, const Type& type, const Type* item);
  Value complex(const Type& type, const Element& element);
  void complainOfMissing(const Type& type, const Value& out);
  // Texts and elements in their order: "$" is a list of them.
  void mixed(const Type& type, const Element& element, Value& out);
  // \param next where the member of the one before stands: the order is mostly that of the type.
  void member(const Type& type, const Element& child, size_t& next, Value& out, bool mayRepeat = true);
  const ztservice::Element* substituteOf(const Member& member, const Name& name);
  // In another namespace, or in none: servers get this wrong often.
  const Member* sameLocal(const Type& type, const Element& child);
  // Without a type: a text, or an object of what is inside.
  Value generic(const Element& element);

 protected:
  const Service& service_;
  SimpleValues simple_;
  const AnswerTree& tree_;
  const AnswerOptions& options_;
  Answer& answer_;
  // Of a SOAP encoding, where everything may be nil.
  bool isEncoded_ = false;

 private:
  std::span<const MimePart> parts_;
  std::set<const MimePart*> used_;
  std::string path_;
  size_t depth_ = 0;
  size_t elements_ = 0;
  uint64_t bytes_ = 0;
  // What references lead through.
  std::set<const Element*> open_;
};

}  // namespace ztservice::call
