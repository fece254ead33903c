#include "ztservice/Reach.h"

#include <algorithm>
#include <unordered_set>

namespace ztservice {

namespace {

using schema::ElementEntry;
using schema::Resolver;
using schema::TypeEntry;

// Goes through types and elements; tells of each name in them.
class Walk {
 public:
  explicit Walk(Resolver& resolver) : resolver_(resolver) {}

  void settle(TypeEntry& type) {
    inside_.push_back(&type);
    while (!inside_.empty()) {
      TypeEntry* next = inside_.back();
      inside_.pop_back();
      resolver_.settle(*next);
      look(*next);
    }
  }
  void settle(ElementEntry& element) {
    resolver_.complete(element);
    if (!element.error.empty()) return;
    meet(element.type);
    for (const Name& name : element.substitutes) elements.push_back(name);
    if (!inside_.empty()) {
      TypeEntry* type = inside_.back();
      inside_.pop_back();
      settle(*type);
    }
  }

  // What was met and not looked at yet.
  std::vector<Name> types;
  std::vector<Name> elements;

 private:
  void meet(const TypeReference& type) {
    if (type.anonymous) {
      inside_.push_back(&Resolver::entryOf(*type.anonymous));
    } else if (!type.name.empty()) {
      types.push_back(type.name);
    }
  }

  void look(const Type& type) {
    if (!type.error.empty()) return;
    if (!type.base.empty()) types.push_back(type.base);
    if (type.anonymousBase) inside_.push_back(&Resolver::entryOf(*type.anonymousBase));
    if (type.item) meet(*type.item);
    if (type.content) meet(*type.content);
    for (const TypeReference& one : type.memberTypes) meet(one);
    for (const Name& name : type.derived) types.push_back(name);
    for (const Attribute& attribute : type.attributes) {
      if (attribute.error.empty()) meet(attribute.type);
    }
    for (const Member& member : type.members) look(member);
  }

  void look(const Member& member) {
    if (member.any) return;
    if (member.isReference) elements.push_back(member.name);
    if (member.error.empty()) meet(member.type);
  }

  Resolver& resolver_;
  std::vector<TypeEntry*> inside_;
};

template <class T>
const T* findIn(const std::vector<const T*>& sorted, const Name& name) {
  const auto at = std::lower_bound(sorted.begin(), sorted.end(), name,
                                   [](const T* one, const Name& wanted) { return one->name < wanted; });
  return at != sorted.end() && (*at)->name == name ? *at : nullptr;
}

template <class T>
void sortByName(std::vector<const T*>& all) {
  std::sort(all.begin(), all.end(), [](const T* a, const T* b) { return a->name < b->name; });
}

}  // namespace

const Type& settleWhole(TypeEntry& type, Resolver& resolver) {
  Walk(resolver).settle(type);
  return type;
}

const Element& settleWhole(ElementEntry& element, Resolver& resolver) {
  Walk(resolver).settle(element);
  return element;
}

void Reach::follow(const std::vector<Port>& ports, Resolver& resolver) {
  Walk walk(resolver);
  const auto take = [&](const Part& part) {
    if (!part.element.empty()) walk.elements.push_back(part.element);
    if (!part.type.empty()) walk.types.push_back(part.type);
  };
  const auto takeMessage = [&](const std::optional<Message>& message) {
    if (!message) return;
    for (const Part& part : message->parts) take(part);
    for (const Header& header : message->headers) {
      if (header.part) take(*header.part);
    }
    for (const Attachment& attachment : message->attachments) take(attachment.part);
  };
  std::unordered_set<const std::vector<Operation>*> seenOperations;
  for (const Port& port : ports) {
    if (!seenOperations.insert(&port.operations()).second) continue;
    for (const Operation& operation : port.operations()) {
      takeMessage(operation.input());
      takeMessage(operation.output());
      for (const Fault& fault : operation.faults()) {
        for (const Part& part : fault.parts) take(part);
      }
    }
  }
  std::unordered_set<Name, NameHash> seenElements;
  std::unordered_set<Name, NameHash> seenTypes;
  while (!walk.elements.empty() || !walk.types.empty()) {
    if (!walk.elements.empty()) {
      const Name name = walk.elements.back();
      walk.elements.pop_back();
      ElementEntry* element = seenElements.insert(name).second ? resolver.findElement(name) : nullptr;
      if (!element) continue;
      walk.settle(*element);
      elements_.push_back(element);
    } else {
      const Name name = walk.types.back();
      walk.types.pop_back();
      TypeEntry* type = seenTypes.insert(name).second ? resolver.findType(name) : nullptr;
      if (!type) continue;
      walk.settle(*type);
      types_.push_back(type);
    }
  }
  sortByName(elements_);
  sortByName(types_);
}

const Element* Reach::element(const Name& name) const { return findIn(elements_, name); }
const Type* Reach::type(const Name& name) const { return findIn(types_, name); }

}  // namespace ztservice
