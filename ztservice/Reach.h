#pragma once

#include <span>
#include <unordered_map>
#include <vector>

#include "ztservice/schema/Resolver.h"
#include "ztservice/wsdl/Port.h"

namespace ztservice {

// Settles a type or element with all that is written inside it.
const Type& settleWhole(schema::TypeEntry& type, schema::Resolver& resolver);
const Element& settleWhole(schema::ElementEntry& element, schema::Resolver& resolver);

// The types and global elements that the messages of ports lead to, over any number of steps.
class Reach {
 public:
  void follow(const std::vector<Port>& ports, schema::Resolver& resolver);

  // By namespace and name.
  std::span<const Element* const> elements() const noexcept { return elements_; }
  std::span<const Type* const> types() const noexcept { return types_; }
  const Element* element(const Name& name) const;
  const Type* type(const Name& name) const;

 private:
  std::vector<const Element*> elements_;
  std::vector<const Type*> types_;
};

}  // namespace ztservice
