#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tovin/BaseString.h"
#include "tovin/iNode.h"

// What holds where a node stands: what its prefixes are bound to, and which schema is around it. Written down
// in one walk through each tree, so that no question climbs a deep one.
class Surroundings {
 public:
  static constexpr size_t none = static_cast<size_t>(-1);
  /// Schemas by their nodes, as indexes.
  using Schemas = std::unordered_map<const tovin::iNode*, size_t>;
  using Roots = std::unordered_set<const tovin::iNode*>;

  /// Walks a tree, but not into the roots of other ones that hang in it.
  void add(const tovin::iNode* root, const Roots& otherRoots, const Schemas& schemas);
  bool covers(const tovin::iNode* node) const { return places_.count(node) != 0; }
  /// Null if nothing; of no prefix the default namespace.
  tovin::WideString boundAt(const tovin::iNode* node, std::wstring_view prefix) const;
  /// The index of the schema around a covered node, itself included; none if none.
  size_t schemaAround(const tovin::iNode* node) const;

 private:
  // From a place on, in document order, a key has another value. Value 0 is nothing.
  struct Change {
    size_t from;
    size_t value;
  };
  using Changes = std::vector<Change>;
  // A node that the walk is in, and how many of the changes to undo are those of the nodes around it.
  struct Open {
    const tovin::iNode* node;
    unsigned nextChild;
    size_t changesAround;
  };
  struct Undo {
    Changes* changes;
    size_t value;
  };

  void enter(const tovin::iNode* node, const Schemas& schemas);
  void leave();
  void change(Changes& changes, size_t value);
  size_t valueAt(const tovin::iNode* node, const Changes& changes) const;

  std::unordered_map<const tovin::iNode*, size_t> places_;
  std::unordered_map<std::wstring, Changes> bindings_;
  Changes schemaChanges_;
  std::vector<tovin::WideString> uris_;
  std::vector<Open> open_;
  std::vector<Undo> undo_;
};
