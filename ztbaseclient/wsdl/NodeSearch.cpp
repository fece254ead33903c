#include "ztbaseclient/wsdl/NodeSearch.h"

#include "tovin/values/StringValue.h"
#include "tovinCore/Units.h"

using tovin::iNode;

namespace {

std::wstring_view viewOf(const wchar_t* text) { return text ? std::wstring_view(text) : std::wstring_view(); }

// The first attribute whose name passes; no object is made of it.
template <class Test>
std::optional<tovin::AttributeView> firstAttribute(const iNode* node, Test&& passes) {
  for (unsigned i = 0, count = node->attributeCount(); i < count; ++i) {
    const tovin::AttributeView view = node->viewAttribute(i);
    if (passes(view.name)) return view;
  }
  return std::nullopt;
}

bool holdsToken(const wchar_t* name) {
  return viewOf(name).find(NodeSearch::Token) != std::wstring_view::npos;
}

}  // namespace

NameParts::NameParts(std::wstring_view name) {
  const size_t colon = name.find(L':');
  hasPrefix = colon != std::wstring_view::npos;
  prefix = hasPrefix ? name.substr(0, colon) : std::wstring_view();
  local = hasPrefix ? name.substr(colon + 1) : name;
}

void NodeSearch::addSoapPrefix(std::wstring_view prefix) { soapPrefixes_.insert(folded(prefix)); }

bool NodeSearch::isSoapPrefix(std::wstring_view prefix) const {
  return soapPrefixes_.count(folded(prefix)) != 0;
}

bool NodeSearch::Equals_NS(const wchar_t* documentName, const wchar_t* name, NameMode mode) const {
  const NameParts a(viewOf(documentName));
  const NameParts b(viewOf(name));
  if (mode == NameMode::plain) return tovin::equalFolded(a.local, b.local);
  if (!holdsToken(documentName) && !holdsToken(name)) {
    throw tovin::Exception(L"Invalid namespace comparison between '%ls' == '%ls'",
                           std::wstring(viewOf(documentName)), std::wstring(viewOf(name)));
  }
  return tovin::equalFolded(a.local, b.local) && isSoapPrefix(holdsToken(name) ? a.prefix : b.prefix);
}

iNode* NodeSearch::findNode(iNode* node, const wchar_t* name, NameMode mode) const {
  for (unsigned i = node->getNumberOfChildren(); i > 0; --i) {
    iNode* child = node->getChildAt(i - 1);
    if (Equals_NS(child->getName(), name, mode)) return child;
  }
  return nullptr;
}

void NodeSearch::findNodes(iNode* node, const wchar_t* name, tovin::NodeReferenceSet& found,
                           NameMode mode) const {
  forChildren(node, [&](iNode* child) {
    if (Equals_NS(child->getName(), name, mode)) found.add(child);
  });
}

std::optional<tovin::AttributeView> findAttr(const iNode* node, const wchar_t* name) {
  const std::wstring_view local = NameParts(name).local;
  return firstAttribute(node, [&](const wchar_t* candidate) {
    return tovin::equalFolded(NameParts(viewOf(candidate)).local, local);
  });
}

tovin::WideString findAttrVal(const iNode* node, const wchar_t* name) {
  const std::optional<tovin::AttributeView> found = findAttr(node, name);
  tovin::WideString text = found ? found->getText() : tovin::WideString();
  return text.isNull() ? tovin::WideString(L"") : text;
}

tovin::WideString attributeText(const iNode* node, const wchar_t* name) {
  const auto found =
      firstAttribute(node, [&](const wchar_t* candidate) { return tovin::equalFolded(candidate, name); });
  return found ? found->getText() : tovin::WideString();
}

void putText(iNode* node, const wchar_t* name, const wchar_t* text) {
  tovin::iPropertyCollection* properties = node->getProperties();
  if (tovin::iProperty* property = properties->find(name))
    property->setValue(text);
  else
    properties->define(name, text, 0);
}

std::wstring folded(std::wstring_view text) {
  std::wstring result(text);
  for (wchar_t& c : result) c = tovin::foldAscii(c);
  return result;
}

bool isNamed(const iNode* node, std::wstring_view localName) {
  return tovin::equalFolded(NameParts(viewOf(node->getName())).local, localName);
}

NamedChildren::NamedChildren(iNode* node) {
  forChildren(node, [&](iNode* child) {
    const std::optional<tovin::AttributeView> name = findAttr(child, L"name");
    if (name) nodes_.try_emplace(key(viewOf(child->getName()), name->getText().view()), child);
  });
}

// A blank is in no element name.
std::wstring NamedChildren::key(std::wstring_view element, std::wstring_view name) {
  return folded(NameParts(element).local) + L' ' + folded(NameParts(name).local);
}

iNode* NamedChildren::findNodeByAttr(std::wstring_view element, std::wstring_view name) const {
  const auto found = nodes_.find(key(element, name));
  return found == nodes_.end() ? nullptr : found->second;
}
