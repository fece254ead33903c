#include "ztbaseclient/data/DeepPropertyUtils.h"

#include <vector>

#include "tovin/iXPathParser.h"
#include "tovinCore/Guard.h"
#include "tovinCore/Numbers.h"
#include "tovinCore/Units.h"

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

bool lookUpFrom(const tovin::iNode& node, const wchar_t* location, const wchar_t* leaf,
                tovin::NodeReferenceSet& nodes) {
  if (!location || !*location) {
    if (leaf && !(node.hasProperties() && node.getProperties()->isDefined(leaf))) return false;
    nodes.add(const_cast<tovin::iNode*>(&node));
    return true;
  }
  tovin::WideString query(location);
  if (leaf) {
    tovin::WideString name(leaf);
    DeepPropertyUtils::MassagePropertyName(name);
    ((query += L"[@") += name) += L"]";
  }
  node.query(query, anyNode, nodes);
  return true;
}

}  // namespace

void DeepPropertyUtils::NodeLocation(const tovin::iNode& node, bool useNames, tovin::WideString& path) {
  std::vector<const tovin::iNode*> steps;
  for (const tovin::iNode* at = &node; at; at = at->findParent()) steps.push_back(at);
  path = L"/";
  for (size_t i = steps.size(); i-- > 0;) {
    const tovin::iNode& step = *steps[i];
    if (useNames)
      path += step.getName();
    else
      path += L'*';
    if (!useNames || !IsUniquelyNamedChild(step)) {
      ((path += L'[') += tovin::util::integerToString(GetChildIndex(step, useNames) + 1LL)) += L']';
    }
    path += L'/';
  }
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

bool DeepPropertyUtils::LocationLookup(const tovin::iPropertyCollection* collection, const wchar_t* location,
                                       const wchar_t* leaf, tovin::NodeReferenceSet& nodes) {
  return guarded({ClassName, "LocationLookup"}, [&] {
    nodes.clear();
    const auto* owner = collection ? tovin::seek<tovin::iNode>(collection->findOwner()) : nullptr;
    if (!owner) throw tovin::Exception(L"Cannot perform lookup on property collection without node owner");
    return lookUpFrom(*owner, location, leaf, nodes);
  });
}

bool DeepPropertyUtils::DecodePropertyPath(tovin::iDataRecord* record, const wchar_t* path, bool,
                                           tovin::NodeReferenceSet& nodes, tovin::WideString& name) {
  return guarded({ClassName, "DecodePropertyPath"}, [&] {
    nodes.clear();
    name.setNull();
    const tovin::iNode* root = record ? record->getRootNode() : nullptr;
    if (!root || !path) return false;
    const tovin::WideString whole(path);
    const size_t slash = whole.findLast(L'/');
    name = whole.subString(slash == whole.npos ? 0 : slash + 1);
    const tovin::WideString location =
        slash == whole.npos ? tovin::WideString(L"") : whole.subString(0, slash);
    return lookUpFrom(*root, location, name, nodes) && !nodes.isEmpty();
  });
}
