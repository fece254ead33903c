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

// What a child of a schema declares.
std::optional<SchemaSet::Kind> kindOf(const iNode* declaration) {
  using Kind = SchemaSet::Kind;
  if (isNamed(declaration, L"element")) return Kind::element;
  if (isNamed(declaration, L"complexType")) return Kind::complexType;
  if (isNamed(declaration, L"simpleType")) return Kind::simpleType;
  if (isNamed(declaration, L"group")) return Kind::group;
  return std::nullopt;
}

tovin::WideString ownTarget(const iNode* schemaNode) {
  tovin::WideString target = attributeText(schemaNode, L"targetNamespace");
  return target.isEmpty() ? tovin::WideString() : target;
}

// The URI that a value binds a prefix to; null if none.
tovin::WideString knownTo(const tovin::Array<CWsdlParser::CNamespace>& namespaces, std::wstring_view prefix) {
  for (const CWsdlParser::CNamespace& space : namespaces) {
    if (!tovin::equalFolded(space.name.view(), prefix)) continue;
    tovin::WideString uri(space.getUrl() ? space.getProtocol() : nullptr);
    if (!uri.isNull()) uri += space.getUrl();
    return uri;
  }
  return {};
}

// In another document: of the schema, else of its definitions.
tovin::WideString targetAbove(const iNode* node) {
  tovin::WideString target;
  for (; node && target.isNull(); node = node->findParent()) target = ownTarget(node);
  return target;
}

bool isQualified(const iNode* schemaNode, const wchar_t* attribute) {
  return tovin::equalFolded(attributeText(schemaNode, attribute).view(), std::wstring_view(L"qualified"));
}

}  // namespace

void SchemaSet::addFileRoot(const iNode* root) {
  fileRoots_.insert(root);
  surroundings_.reset();
}

void SchemaSet::addInclusion(iNode* includer, iNode* fileRoot) {
  std::vector<tovin::Ptr<iNode>>& files = inclusions_[includer];
  if (files.empty()) includers_.emplace_back(includer);
  files.emplace_back(fileRoot);
  if (includer != fileRoot) included_.insert(fileRoot);
}

void SchemaSet::addAll(const tovin::NodeReferenceSet& schemaNodes) {
  for (size_t i = 0; i < schemaNodes.getSize(); ++i) {
    iNode* node = schemaNodes[i];
    CSchema schema;
    schema.node = tovin::Ptr<iNode>(node);
    schema.namespaces = declarationsOn(node);
    schema.setTargetNamespace(attributeText(node, L"targetNamespace"));
    schema.setIsElementFormQualified(isQualified(node, L"elementFormDefault"));
    schema.setIsAttributeFormQualified(isQualified(node, L"attributeFormDefault"));
    positions_[node] = i;
    schemas_.add(std::move(schema));
  }
  surroundings_.reset();
  shareNamespaces();
  for (const CSchema& schema : schemas_) {
    const std::vector<std::wstring> scopes = scopesOf(schema.node.get());
    for (const std::wstring& scope : scopes) scopes_.try_emplace(scope, positions_.at(schema.node.get()));
    forChildren(schema.node.get(), [&](iNode* child) { index(scopes, child); });
  }
}

void SchemaSet::shareNamespaces() {
  for (const tovin::Ptr<iNode>& includer : includers_) {
    const tovin::WideString target = ownTarget(includer.get());
    if (!target.isNull() || !included_.count(includer.get())) share(includer.get(), target);
  }
}

// A list instead of recursion: files include one another in chains and circles.
void SchemaSet::share(const iNode* includer, const tovin::WideString& uri) {
  std::vector<const iNode*> sharing{includer};
  for (size_t i = 0; i < sharing.size(); ++i) {
    const auto included = inclusions_.find(sharing[i]);
    if (included == inclusions_.end()) continue;
    for (const tovin::Ptr<iNode>& schema : included->second) {
      if (admit(schema.get(), uri)) sharing.push_back(schema.get());
    }
  }
}

bool SchemaSet::admit(const iNode* included, const tovin::WideString& uri) {
  if (!ownTarget(included).isNull()) return false;
  Membership& membership = memberships_[included];
  if (!membership.known.emplace(uri.view()).second) return false;
  membership.uris.push_back(uri);
  // What it declares is indexed once more.
  if (membership.uris.size() > 1) countShared(1 + included->getNumberOfChildren());
  return true;
}

// Any number of namespaces may include the same files, which multiplies: no real document comes near this.
void SchemaSet::countShared(size_t count) {
  constexpr size_t mostShared = 1'000'000;
  shared_ += count;
  if (shared_ > mostShared) {
    throw tovin::Exception(L"Too many namespaces share the schemas that they include");
  }
}

std::vector<std::wstring> SchemaSet::scopesOf(const iNode* schemaNode) const {
  std::vector<std::wstring> scopes{ownScope(schemaNode)};
  for (tovin::WideString uri : membershipsOf(schemaNode)) {
    if (uri.isNull()) {
      scopes.push_back(withoutNamespace);
      uri = definitionsTarget();
    }
    if (uri.isNull()) continue;
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
  const std::optional<Kind> kind = kindOf(declaration);
  const tovin::WideString name = attributeText(declaration, L"name");
  if (!kind || name.isNull()) return;
  for (const std::wstring& scope : scopes) {
    declarations_.try_emplace(key(scope, exactly, *kind, name.view()), declaration);
    declarations_.try_emplace(key(scope, inAnyCase, *kind, folded(name.view())), declaration);
  }
}

const CSchema* SchemaSet::find(const iNode* schemaNode) const {
  const auto found = positions_.find(schemaNode);
  return found == positions_.end() ? nullptr : &schemas_.data()[found->second];
}

const Surroundings& SchemaSet::surroundings() const {
  if (surroundings_) return *surroundings_;
  surroundings_.emplace();
  if (definitions_) surroundings_->add(definitions_, fileRoots_, positions_);
  for (const iNode* root : fileRoots_) surroundings_->add(root, fileRoots_, positions_);
  return *surroundings_;
}

// A node of another document is in none.
const CSchema* SchemaSet::enclosing(const iNode* node) const {
  if (!node || !surroundings().covers(node)) return nullptr;
  const size_t index = surroundings().schemaAround(node);
  return index == Surroundings::none ? nullptr : &schemas_.data()[index];
}

tovin::WideString SchemaSet::definitionsTarget() const {
  return definitions_ ? ownTarget(definitions_) : tovin::WideString();
}

// Null stands for no namespace.
std::vector<tovin::WideString> SchemaSet::membershipsOf(const iNode* schemaNode) const {
  const auto member = memberships_.find(schemaNode);
  if (member != memberships_.end()) return member->second.uris;
  return {ownTarget(schemaNode)};
}

std::vector<tovin::WideString> SchemaSet::namespacesAround(const iNode* node) const {
  const CSchema* schema = enclosing(node);
  std::vector<tovin::WideString> uris;
  if (schema) uris = membershipsOf(schema->node.get());
  if (!schema && node && !surroundings().covers(node)) uris.push_back(targetAbove(node));
  if (uris.empty()) uris.emplace_back();
  for (tovin::WideString& uri : uris) {
    if (uri.isNull()) uri = definitionsTarget();
  }
  return uris;
}

// A node of another document is climbed from. In a file its own root is the last.
tovin::WideString SchemaSet::boundAt(Origin origin, std::wstring_view prefix) const {
  tovin::WideString uri;
  const iNode* node = origin.node;
  if (node && surroundings().covers(node))
    uri = surroundings().boundAt(node, prefix);
  else
    for (; node && uri.isNull(); node = node->findParent()) uri = declaredOn(node, prefix);
  if (uri.isNull() && origin.namespaces) uri = knownTo(*origin.namespaces, prefix);
  if (uri.isNull() && !origin.node) {
    if (!definitions_) throw tovin::Exception(L"Cannot dereference a NULL pointer");
    return boundAt(definitions_, prefix);
  }
  if (uri.isNull() && prefix == L"xml") return tovin::WideString(wsdlnamespaces::Xml);
  return uri;
}

tovin::WideString SchemaSet::namespaceOf(Origin origin, const QualifiedName& name) const {
  tovin::WideString uri = boundAt(origin, name.prefix);
  if (!name.hasPrefix) return uri.isEmpty() ? tovin::WideString() : uri;
  if (uri.isNull()) throw tovin::Exception(L"Can't find namespace %ls\n", name.prefix);
  if (uri.isEmpty()) throw tovin::Exception(L"Can't derive target namespace from ns-name %ls", name.text);
  return uri;
}

SchemaSet::Place SchemaSet::placeOf(const wchar_t* uri) const {
  if (!uri || !*uri) return {tovin::WideString(), {withoutNamespace}};
  return {tovin::WideString(uri), {exactScope(uri), foldedScope(uri)}};
}

// Without a namespace an included schema asks itself and those that include it first, any other one those
// that have no namespace.
SchemaSet::Place SchemaSet::placeOf(Origin origin, const QualifiedName& name) const {
  Place place = placeOf(namespaceOf(origin, name));
  const CSchema* own = place.uri.isNull() ? enclosing(origin.node) : nullptr;
  if (!own) return place;
  const std::vector<std::wstring> scopes = scopesOf(own->node.get());
  const bool included = memberships_.count(own->node.get()) != 0;
  place.scopes.insert(included ? place.scopes.begin() : place.scopes.end(), scopes.begin(), scopes.end());
  return place;
}

const CSchema* SchemaSet::findFirst(const Place& place) const {
  for (const std::wstring& scope : place.scopes) {
    const auto found = scopes_.find(scope);
    if (found != scopes_.end()) return &schemas_.data()[found->second];
  }
  return nullptr;
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

// A look-up without the index goes through the children, in the same order.
iNode* SchemaSet::findIn(const CSchema& schema, Kinds kinds, std::wstring_view name) const {
  iNode* schemaNode = schema.node.get();
  if (find(schemaNode)) return find({tovin::WideString(), {ownScope(schemaNode)}}, kinds, name);
  for (const bool exact : {true, false}) {
    for (const Kind kind : kinds) {
      for (iNode* child : schemaNode->getChildren()) {
        const tovin::WideString own = attributeText(child, L"name");
        const bool same = exact ? own.view() == name : tovin::equalFolded(own.view(), name);
        if (same && !own.isNull() && kindOf(child) == kind) return child;
      }
    }
  }
  return nullptr;
}
