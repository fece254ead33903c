#include "ztbaseclient/data/DeepPropertyUtils.h"

#include "tovin/iXPathParser.h"
#include "tovin/xpath/QueryNames.h"
#include "tovinCore/Guard.h"
#include "tovinCore/Units.h"
#include "ztbaseclient/data/NodeLocations.h"

using tovin::guarded;

namespace {

constexpr const char* ClassName = "DeepPropertyUtils";

template <class C>
void replaceSpaces(tovin::BaseString<C>& name, std::basic_string_view<C> mark) {
  if (name.isNull() || name.view().find(C(' ')) == name.npos) return;
  tovin::BaseString<C> massaged;
  massaged.clear();
  for (C c : name.view()) {
    if (c == C(' '))
      massaged += mark;
    else
      massaged += c;
  }
  name = massaged;
}

// What a step selects by: the nodes a query finds, or owners of the attributes it finds.
constexpr unsigned anyNode = tovin::iXPathParser::elements | tovin::iXPathParser::attributeOwners;

bool carries(const tovin::iNode& node, const wchar_t* leaf) {
  return node.hasProperties() && node.getProperties()->isDefined(leaf);
}

// A location as a query can be continued: without the '/' that closes its last step. "/" means every node.
tovin::WideString queryOf(const wchar_t* location) {
  const std::wstring_view text(location);
  if (text == L"/") return tovin::WideString(L"//*");
  const size_t last = text.find_last_not_of(L'/');
  return tovin::WideString(text.substr(0, last == text.npos ? last : last + 1));
}

// The nodes that a query finds and that carry a property of a name that no query can hold.
void selectCarriers(const tovin::iNode& node, const wchar_t* query, const wchar_t* leaf,
                    tovin::NodeReferenceSet& nodes) {
  tovin::NodeReferenceSet all;
  node.query(query, anyNode, all);
  for (size_t i = 0; i < all.getSize(); ++i) {
    if (carries(*all[i], leaf)) nodes.add(all[i]);
  }
}

bool lookUpFrom(const tovin::iNode& node, const wchar_t* location, const wchar_t* leaf, unsigned flags,
                tovin::NodeReferenceSet& nodes) {
  if (!location || !*location) {
    if (leaf && !carries(node, leaf)) return false;
    nodes.add(const_cast<tovin::iNode*>(&node));
    return true;
  }
  tovin::WideString query = queryOf(location);
  if (leaf) {
    tovin::WideString name(leaf);
    DeepPropertyUtils::MassagePropertyName(name);
    if (!tovin::xpath::isQName(name.view())) {
      selectCarriers(node, query, leaf, nodes);
      return true;
    }
    ((query += L"[@") += name) += L"]";
  }
  node.query(query, flags, nodes);
  return true;
}

const tovin::iNode& requireOwner(const tovin::iPropertyCollection* collection) {
  const auto* owner = collection ? tovin::seek<tovin::iNode>(collection->findOwner()) : nullptr;
  if (!owner) throw tovin::Exception(L"Cannot perform lookup on property collection without node owner");
  return *owner;
}

}  // namespace

void DeepPropertyUtils::NodeLocation(const tovin::iNode& node, bool useNames, tovin::WideString& path) {
  const auto position = [useNames](const tovin::iNode& step) {
    return useNames && IsUniquelyNamedChild(step) ? 0 : GetChildIndex(step, useNames) + 1;
  };
  NodeLocations::write(node, useNames, position, path);
}

unsigned DeepPropertyUtils::GetChildIndex(const tovin::iNode& node, bool sameNameOnly) {
  const tovin::iNode* parent = node.findParent();
  if (!parent) return 0;
  unsigned index = 0;
  for (unsigned i = 0; i < parent->getNumberOfChildren(); ++i) {
    const tovin::iNode* child = parent->getChildAt(i);
    if (child == &node) break;
    if (!sameNameOnly || tovin::equalFolded(child->getName(), node.getName())) ++index;
  }
  return index;
}

bool DeepPropertyUtils::IsUniquelyNamedChild(const tovin::iNode& node) {
  const tovin::iNode* parent = node.findParent();
  if (!parent) return true;
  for (unsigned i = 0; i < parent->getNumberOfChildren(); ++i) {
    const tovin::iNode* child = parent->getChildAt(i);
    if (child != &node && tovin::equalFolded(child->getName(), node.getName())) return false;
  }
  return true;
}

void DeepPropertyUtils::MassagePropertyName(tovin::WideString& name) {
  replaceSpaces<wchar_t>(name, L"__white_space__");
}

void DeepPropertyUtils::MassagePropertyName(tovin::NarrowString& name) {
  replaceSpaces<char>(name, "__white_space__");
}

void DeepPropertyUtils::SplitPropertyPath(const wchar_t* path, tovin::WideString& location,
                                          tovin::WideString& leaf) {
  const tovin::WideString whole(path);
  const size_t slash = whole.findLast(L'/');
  location = whole.subString(0, slash == whole.npos ? 0 : slash);
  leaf = whole.subString(slash == whole.npos ? 0 : slash + 1);
}

bool DeepPropertyUtils::LocationLookup(const tovin::iPropertyCollection* collection, const wchar_t* location,
                                       const wchar_t* leaf, tovin::NodeReferenceSet& nodes) {
  return guarded({ClassName, "LocationLookup"}, [&] {
    return tovin::refill(nodes, [&](tovin::NodeReferenceSet& found) {
      return lookUpFrom(requireOwner(collection), location, leaf, anyNode, found);
    });
  });
}

bool DeepPropertyUtils::FirstAtLocation(const tovin::iPropertyCollection* collection, const wchar_t* location,
                                        const wchar_t* leaf, tovin::NodeReferenceSet& nodes) {
  return guarded({ClassName, "LocationLookup"}, [&] {
    return tovin::refill(nodes, [&](tovin::NodeReferenceSet& found) {
      constexpr unsigned first = anyNode | tovin::iXPathParser::firstOnly;
      return lookUpFrom(requireOwner(collection), location, leaf, first, found);
    });
  });
}

bool DeepPropertyUtils::DecodePropertyPath(tovin::iDataRecord* record, const wchar_t* path, bool,
                                           tovin::NodeReferenceSet& nodes, tovin::WideString& name) {
  return guarded({ClassName, "DecodePropertyPath"}, [&] {
    const tovin::WideString whole(path);
    name.setNull();
    return tovin::refill(nodes, [&](tovin::NodeReferenceSet& found) {
      const tovin::iNode* root = record ? record->getRootNode() : nullptr;
      if (!root || whole.isNull()) return false;
      tovin::WideString location;
      SplitPropertyPath(whole, location, name);
      return lookUpFrom(*root, location, name, anyNode, found) && !found.isEmpty();
    });
  });
}
