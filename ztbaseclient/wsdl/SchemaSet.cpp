#include "ztbaseclient/wsdl/SchemaSet.h"

#include "tovinCore/Units.h"
#include "ztbaseclient/wsdl/WsdlNamespaces.h"

using tovin::iNode;
using CSchema = CWsdlParser::CSchema;

namespace {

// The schemas that have no target namespace of their own.
constexpr wchar_t withoutNamespace[] = L"-";

std::wstring exactScope(std::wstring_view uri) { return L"=" + std::wstring(uri); }
std::wstring foldedScope(std::wstring_view uri) { return L"~" + folded(uri); }

// A line feed is in no name, and a URI that has one only shares its key with names that have one too.
std::wstring key(const std::wstring& scope, wchar_t match, SchemaSet::Kind kind, std::wstring_view name) {
  std::wstring text = scope;
  text += {L'\n', match, static_cast<wchar_t>(kind)};
  return text.append(name);
}

constexpr wchar_t exactly = L'=';
constexpr wchar_t inAnyCase = L'~';

const std::unordered_map<std::wstring, SchemaSet::Kind>& kindsByElement() {
  static const std::unordered_map<std::wstring, SchemaSet::Kind> kinds{
      {L"element", SchemaSet::Kind::element},
      {L"complextype", SchemaSet::Kind::complexType},
      {L"simpletype", SchemaSet::Kind::simpleType},
      {L"group", SchemaSet::Kind::group}};
  return kinds;
}

tovin::WideString ownTarget(const iNode* schemaNode) {
  tovin::WideString target = attributeText(schemaNode, L"targetNamespace");
  return target.isEmpty() ? tovin::WideString() : target;
}

bool declaresAny(const iNode* node) {
  bool any = false;
  forDeclarations(node, [&](std::wstring_view, const tovin::WideString&) { any = true; });
  return any;
}

bool isQualified(const iNode* schemaNode, const wchar_t* attribute) {
  return tovin::equalFolded(attributeText(schemaNode, attribute).view(), std::wstring_view(L"qualified"));
}

}  // namespace

void SchemaSet::add(iNode* definitions, iNode* schemaNode) {
  CSchema schema;
  schema.node = tovin::Ptr<iNode>(schemaNode);
  schema.namespaces = declarationsOn(schemaNode);
  schema.setTargetNamespace(attributeText(schemaNode, L"targetNamespace"));
  schema.setIsElementFormQualified(isQualified(schemaNode, L"elementFormDefault"));
  schema.setIsAttributeFormQualified(isQualified(schemaNode, L"attributeFormDefault"));
  positions_[schemaNode] = schemas_.getSize();
  schemas_.add(std::move(schema));
  const std::vector<std::wstring> scopes = scopesOf(definitions, schemaNode);
  scopes_.insert(scopes.begin(), scopes.end());
  forChildren(schemaNode, [&](iNode* child) { index(scopes, child); });
}

std::vector<std::wstring> SchemaSet::scopesOf(iNode* definitions, const iNode* schemaNode) const {
  std::vector<std::wstring> scopes{ownScope(schemaNode)};
  if (ownTarget(schemaNode).isNull()) scopes.push_back(withoutNamespace);
  const tovin::WideString uri = effectiveNamespace(definitions, schemaNode);
  if (!uri.isNull()) {
    scopes.push_back(exactScope(uri.view()));
    scopes.push_back(foldedScope(uri.view()));
  }
  return scopes;
}

std::wstring SchemaSet::ownScope(const iNode* schemaNode) const {
  const auto found = positions_.find(schemaNode);
  return found == positions_.end() ? L"#" : L"#" + std::to_wstring(found->second);
}

void SchemaSet::index(const std::vector<std::wstring>& scopes, iNode* declaration) {
  const auto kind = kindsByElement().find(folded(NameParts(declaration->getName()).local));
  const tovin::WideString name = attributeText(declaration, L"name");
  if (kind == kindsByElement().end() || name.isNull()) return;
  for (const std::wstring& scope : scopes) {
    declarations_.try_emplace(key(scope, exactly, kind->second, name.view()), declaration);
    declarations_.try_emplace(key(scope, inAnyCase, kind->second, folded(name.view())), declaration);
  }
}

const CSchema* SchemaSet::find(const iNode* schemaNode) const {
  const auto found = positions_.find(schemaNode);
  return found == positions_.end() ? nullptr : &schemas_.data()[found->second];
}

const CSchema* SchemaSet::enclosing(const iNode* node) const {
  for (; node; node = node->findParent()) {
    if (const CSchema* schema = find(node)) return schema;
  }
  return nullptr;
}

// An included schema without a namespace belongs to the schema that includes it, which may itself be such a
// one.
tovin::WideString SchemaSet::effectiveNamespace(const iNode* definitions, const iNode* schemaNode) const {
  while (schemaNode) {
    tovin::WideString target = ownTarget(schemaNode);
    if (!target.isNull()) return target;
    const auto includer = includers_.find(schemaNode);
    schemaNode = includer == includers_.end() ? nullptr : includer->second;
  }
  return ownTarget(definitions);
}

// In a file its own root is the last.
const iNode* SchemaSet::outward(const iNode* node) const {
  return fileRoots_.count(node) ? nullptr : node->findParent();
}

const iNode* SchemaSet::nearestDeclaring(const iNode* node) const {
  std::vector<const iNode*> way;
  for (; node && !declaresAny(node); node = outward(node)) {
    const auto known = declaring_.find(node);
    if (known != declaring_.end()) {
      node = known->second.second.get();
      break;
    }
    way.push_back(node);
  }
  const tovin::Ptr<iNode> nearest(const_cast<iNode*>(node));
  for (const iNode* below : way) declaring_[below] = {tovin::Ptr<iNode>(const_cast<iNode*>(below)), nearest};
  return node;
}

tovin::WideString SchemaSet::boundAt(const iNode* node, std::wstring_view prefix) const {
  const iNode* next = node;
  while (const iNode* at = next ? nearestDeclaring(next) : nullptr) {
    tovin::WideString uri = declaredOn(at, prefix);
    if (!uri.isNull()) return uri;
    next = outward(at);
  }
  return prefix == L"xml" ? tovin::WideString(wsdlnamespaces::Xml) : tovin::WideString();
}

tovin::WideString SchemaSet::namespaceOf(const iNode* node, const QualifiedName& name) const {
  tovin::WideString uri = boundAt(node, name.prefix);
  if (!name.hasPrefix) return uri.isEmpty() ? tovin::WideString() : uri;
  if (uri.isNull()) throw tovin::Exception(L"Can't find namespace %ls\n", name.prefix);
  if (uri.isEmpty()) throw tovin::Exception(L"Can't derive target namespace from ns-name %ls", name.text);
  return uri;
}

SchemaSet::Place SchemaSet::placeOf(const wchar_t* uri) const {
  if (!uri || !*uri) return {tovin::WideString(), {withoutNamespace}};
  return {tovin::WideString(uri), {exactScope(uri), foldedScope(uri)}};
}

SchemaSet::Place SchemaSet::placeOf(const CSchema& schema) const {
  return {attributeText(schema.node.get(), L"targetNamespace"), {ownScope(schema.node.get())}};
}

SchemaSet::Place SchemaSet::placeOf(const iNode* node, const QualifiedName& name) const {
  Place place = placeOf(namespaceOf(node, name));
  if (!place.uri.isNull()) return place;
  const CSchema* own = enclosing(node);
  const iNode* schemaNode = own ? own->node.get() : nullptr;
  while (schemaNode) {
    place.scopes.push_back(ownScope(schemaNode));
    const auto includer = includers_.find(schemaNode);
    const bool belongs = includer != includers_.end() && ownTarget(schemaNode).isNull();
    schemaNode = belongs ? includer->second : nullptr;
  }
  return place;
}

bool SchemaSet::exists(const Place& place) const {
  for (const std::wstring& scope : place.scopes) {
    if (scopes_.count(scope)) return true;
  }
  return false;
}

iNode* SchemaSet::find(const Place& place, Kinds kinds, std::wstring_view name) const {
  for (const wchar_t match : {exactly, inAnyCase}) {
    const std::wstring wanted = match == exactly ? std::wstring(name) : folded(name);
    for (const std::wstring& scope : place.scopes) {
      for (const Kind kind : kinds) {
        const auto found = declarations_.find(key(scope, match, kind, wanted));
        if (found != declarations_.end()) return found->second;
      }
    }
  }
  return nullptr;
}
