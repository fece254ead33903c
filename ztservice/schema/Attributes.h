#pragma once

#include <optional>
#include <vector>

#include "ztservice/schema/Resolver.h"

namespace ztservice::schema {

// The attributes that stand below a node, those of groups in place.
class Attributes {
 public:
  // What a declaration says, a prohibition too.
  struct Use {
    Attribute attribute;
    bool prohibited = false;
  };

  Attributes(Resolver& resolver, const TypeEntry& type) : resolver_(resolver), type_(type) {}

  // Errors: Unresolved for a group that is missing or contains itself.
  void read(const parse::Node& parent);
  const std::vector<Use>& uses() const noexcept { return uses_; }
  // The type's own, else that of the first group that has one.
  const std::optional<Wildcard>& any() const noexcept { return any_; }

  // Into a type without base, and behind those of its base; and in place of those of a base.
  void append(std::vector<Attribute>& out) const;
  void replace(std::vector<Attribute>& out) const;

 private:
  struct Frame {
    const parse::Node* next;
    Context at;
    const Declaration* body = nullptr;
  };

  void readNext();
  void open(const parse::Node& node, const Context& at);
  Use use(const parse::Node& node, const Context& at);
  void refer(Attribute& attribute, const parse::Node& node, const Context& at, const Asked& asked);
  static void referKnown(Attribute& attribute, const Asked& asked);
  void addSpecial();

  Resolver& resolver_;
  const TypeEntry& type_;
  std::vector<Frame> frames_;
  std::unordered_set<const Declaration*> bodies_;
  std::vector<Use> uses_;
  std::optional<Wildcard> any_;
  bool ownAny_ = false;
};

}  // namespace ztservice::schema
