#pragma once

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ztservice/load/Arena.h"
#include "ztservice/load/Options.h"
#include "ztservice/schema/Declarations.h"
#include "ztservice/schema/Type.h"

namespace ztservice::schema {

// What keeps the thing at hand from being resolved.
struct Unresolved {
  std::string reason;
};

// A type on its way: what is known of it beside what people see.
struct TypeEntry : Type {
  enum class State : uint8_t { fresh, working, settled };

  // Where it is written: its node is the complexType or simpleType, or the restriction that narrows the text
  // of simple content. Without node for a built-in one.
  Context at{};
  State state = State::fresh;
  bool narrows = false;
  // How many types it is written inside of.
  unsigned depth = 0;
  // The extension, restriction, list or union.
  const parse::Node* derivation = nullptr;
  // What must be settled before: the base, or the item of a list.
  TypeEntry* basis = nullptr;
  // Of simple content.
  TypeEntry* textType = nullptr;
  // How many were opened, those of the bases with them.
  unsigned choices = 0;
  unsigned groups = 0;
};

struct ElementEntry : Element {
  Context at{};
  bool isSettled = false;
  bool isComplete = false;
};

// Resolves the names of a service when they are asked for, and remembers each answer, failures too. Bases and
// groups are followed by lists, never by recursion. Not for several threads.
class Resolver {
 public:
  Resolver(const parse::Loaded& loaded, const Declarations& declarations, const Limits& limits);

  // Whether there is such a type or element: nothing of it need be known yet. Null if none.
  TypeEntry* findType(const Context& context, const Asked& asked);
  ElementEntry* findElement(const Context& context, const Asked& asked);
  TypeEntry* findType(const Name& name);
  ElementEntry* findElement(const Name& name);

  // All of it, but for what is only written inside: that is settled by itself.
  const TypeEntry& settle(TypeEntry& type);
  const ElementEntry& settle(ElementEntry& element);
  // With what can stand in its place.
  const Element& complete(ElementEntry& element);
  // The entry of a type that was given out.
  static TypeEntry& entryOf(const Type& type) {
    return const_cast<TypeEntry&>(static_cast<const TypeEntry&>(type));
  }

  std::string_view keep(std::string_view text) { return texts_.text(text); }

 private:
  friend class Particles;
  friend class Attributes;

  TypeEntry* builtin(const Name& name);
  TypeEntry& entryOf(const Declaration& declaration);
  ElementEntry& elementOf(const Declaration& declaration);
  // A type that is written inside something: inside a type of that depth.
  TypeEntry& anonymous(const parse::Node& node, const Context& context, unsigned depth);
  // The type by name or inside a node, by the words for both; what has neither gets `otherwise`.
  TypeReference typeOf(const parse::Node& node, const Context& context, unsigned depth,
                       const Name& otherwise);
  TypeEntry& neededType(const parse::Node& node, std::string_view text, const Context& context);

  void prepare(TypeEntry& type);
  void build(TypeEntry& type);
  static void fail(TypeEntry& type, std::string_view reason);

  void prepareComplex(TypeEntry& type);
  void buildComplex(TypeEntry& type);
  void buildPlain(TypeEntry& type);
  void buildDerived(TypeEntry& type);
  void buildText(TypeEntry& type);
  void buildArray(TypeEntry& type);

  void prepareSimple(TypeEntry& type);
  void buildSimple(TypeEntry& type);
  void restrictSimple(TypeEntry& type);
  void buildUnion(TypeEntry& type);

  std::string_view headOf(const ElementEntry& element) const;
  void addDerived(TypeEntry& type);
  void indexSubstitutes();
  void indexDerived();
  const Declaration* baseOf(const Declaration& type) const;

  void spend(size_t members);

  using Followers = std::unordered_map<Name, std::vector<const Declaration*>, NameHash>;
  std::vector<Name> followersOf(const Followers& index, const Name& name);

  const parse::Loaded& loaded_;
  const Declarations& declarations_;
  size_t membersLeft_;
  parse::Arena texts_;
  std::deque<TypeEntry> types_;
  std::deque<ElementEntry> elements_;
  std::unordered_map<Name, TypeEntry*, NameHash> builtins_;
  std::unordered_map<const Declaration*, TypeEntry*> declaredTypes_;
  std::unordered_map<const Declaration*, ElementEntry*> declaredElements_;
  ElementEntry* schemaElement_ = nullptr;
  std::optional<Followers> substitutes_;
  std::optional<Followers> derived_;
};

}  // namespace ztservice::schema
