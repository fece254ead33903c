#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace ztservice::parse {

enum class CopyAction {
  // The element is left out with all in it, or without; or loses its attribute schemaLocation.
  drop,
  unwrap,
  unlocate,
};

// What is copied of a document, and what becomes of it. Elements are told by their line and column.
struct CopyPlan {
  using Position = std::pair<uint64_t, uint64_t>;

  const std::string* bytes = nullptr;
  // The element that is copied; only what is in it where the children are asked for.
  Position begin;
  bool childrenOnly = false;
  // Whether what is copied is given the namespace declarations around it, and none of where it goes to.
  bool addsDeclarations = false;
  // For a schema that took a namespace on.
  std::optional<std::string> targetNamespace;
  std::map<Position, CopyAction> actions;
  // New values of attributes that an element has.
  std::map<Position, std::map<std::string, std::string, std::less<>>> changes;
  // Further ones of the element that is copied.
  std::map<std::string, std::string> declarations;
  // Goes before the end of an element, and behind the start of the one that is copied.
  std::map<Position, std::string> insertions;
  std::string behindStart;
};

// The copy, in UTF-8: prefixes, texts and comments as they are. The document was read before, so that it is
// XML.
std::string copyOf(const CopyPlan& plan);

}  // namespace ztservice::parse
