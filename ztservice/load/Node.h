#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "ztservice/load/Words.h"

namespace ztservice::parse {

// One namespace declaration; those around it follow.
struct Scope {
  std::string_view prefix;
  std::string_view uri;
  const Scope* outer;
};

struct Attribute {
  Word word;
  Space space;
  std::string_view value;  // as written, but for what XML makes of line ends and references
};

struct Document;

// One component of a document, as it is written: an element that means something. Lives as long as its
// document.
struct Node {
  Word word = Word::other;
  Space space = Space::none;
  uint32_t line = 0;
  uint32_t column = 0;
  std::string_view local;
  const Scope* scope = nullptr;
  std::span<const Attribute> attributes;
  const Node* first = nullptr;
  const Node* next = nullptr;

  bool is(Space ofSpace, Word ofWord) const noexcept { return word == ofWord && space == ofSpace; }
  bool isSchema(Word ofWord) const noexcept { return is(Space::schema, ofWord); }
  bool isWsdl(Word ofWord) const noexcept { return is(Space::wsdl, ofWord); }

  const Attribute* find(Word ofWord, Space ofSpace = Space::none) const noexcept;
  bool has(Word ofWord) const noexcept { return find(ofWord) != nullptr; }
  // Without the blanks around it; empty where there is none.
  std::string_view get(Word ofWord, Space ofSpace = Space::none) const noexcept;
  // As written.
  std::optional<std::string_view> raw(Word ofWord) const noexcept;
  bool flag(Word ofWord) const noexcept;
  // The first child of that kind, null if none.
  const Node* child(Space ofSpace, Word ofWord) const noexcept;
  const Node* child(Word ofWord) const noexcept { return child(Space::schema, ofWord); }
};

// What follows a node and is of a kind; of its children: for (auto* at = first(node, …); at; at = next(*at,
// …)).
class Children {
 public:
  Children(const Node& parent, Space space, Word word) : first_(parent.first), space_(space), word_(word) {}

  class Iterator {
   public:
    Iterator(const Node* at, const Children& of) : at_(at), of_(of) { skip(); }
    const Node& operator*() const noexcept { return *at_; }
    Iterator& operator++() noexcept {
      at_ = at_->next;
      skip();
      return *this;
    }
    bool operator!=(const Iterator& other) const noexcept { return at_ != other.at_; }

   private:
    void skip() noexcept {
      while (at_ && !at_->is(of_.space_, of_.word_)) at_ = at_->next;
    }
    const Node* at_;
    const Children& of_;
  };
  Iterator begin() const { return {first_, *this}; }
  Iterator end() const { return {nullptr, *this}; }

 private:
  const Node* first_;
  Space space_;
  Word word_;
};

inline std::string_view trimmed(std::string_view text) noexcept {
  constexpr std::string_view blanks = " \t\r\n";
  text.remove_suffix(text.size() - (text.find_last_not_of(blanks) + 1));  // the sum is 0 for none
  text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
  return text;
}

// The next word of a list that blanks separate, which is taken off it; empty at the end.
inline std::string_view takeWord(std::string_view& list) noexcept {
  list = trimmed(list);
  const std::string_view word = list.substr(0, list.find_first_of(" \t\r\n"));
  list.remove_prefix(word.size());
  return word;
}

// "tns:Order" in its two parts; the first is empty where there is no colon.
struct Written {
  std::string_view prefix;
  std::string_view local;
};
Written written(std::string_view text) noexcept;

// The namespace that a prefix stands for at a node; none where nobody declares it. The empty prefix always
// stands for one, which may be none.
std::optional<std::string_view> namespaceOf(const Node& node, std::string_view prefix) noexcept;

}  // namespace ztservice::parse
