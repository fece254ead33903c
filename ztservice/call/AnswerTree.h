#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ztservice/Name.h"
#include "ztservice/call/Answer.h"

namespace ztservice::call {

// XML as a server sent it: its elements with all that they have, in memory.
//
// - Ownership: owns all names and texts.
// - Limits: those of the answer, whatever the document says; it has no document type.
class AnswerTree {
 public:
  struct Attribute {
    Name name;
    std::string_view value;
  };
  struct Element {
    Name name;
    std::vector<Attribute> attributes;
    // Its own, behind each child as one, the first before all of them.
    std::string text;
    std::vector<std::string> textBehind;
    std::vector<const Element*> children;
    // The namespace declaration that was the last before it.
    size_t scope = 0;

    const std::string_view* attribute(const Name& attribute) const;
    // Of a namespace, or of any.
    const Element* child(std::string_view local) const;
    bool isWhiteSpace() const;
  };

  // \param what it is called in errors: "answer". Errors: Error.
  AnswerTree(std::string_view bytes, const AnswerLimits& limits, const char* what);
  const char* what() const noexcept { return what_; }
  const Element& root() const noexcept { return elements_.front(); }
  // By "id"; null where there is none.
  const Element* byId(std::string_view id) const;
  // "prefix:local" as it is meant there; without the namespace where the prefix is not declared.
  Name resolved(const Element& at, std::string_view qualified) const;

 private:
  struct Reader;
  struct Declaration {
    std::string prefix;
    std::string space;
    size_t outer;
  };

  const char* what_;
  // In document order, the root first: given up one by one, however deep they are inside each other.
  std::deque<Element> elements_;
  // Names and values of attributes; never moved.
  std::deque<std::string> texts_;
  // Never moved: names are views of them.
  std::deque<Declaration> declarations_;
  std::unordered_map<std::string_view, const Element*> ids_;
};

}  // namespace ztservice::call
