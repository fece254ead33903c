#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "tovin/Array.h"
#include "ztbaseclient/wsdl/CSchema.h"
#include "ztbaseclient/wsdl/Declarations.h"
#include "ztbaseclient/wsdl/Surroundings.h"

// Where a name is written: at a node, or in a value that knows some namespaces itself; with neither at the
// definitions.
struct Origin {
  Origin(const tovin::iNode* at) : node(at) {}
  template <class Value>
  static Origin of(const Value& value) {
    Origin origin(value.node.get());
    origin.namespaces = &value.namespaces;
    return origin;
  }

  const tovin::iNode* node;
  const tovin::Array<CWsdlParser::CNamespace>* namespaces = nullptr;
};

// The schemas of a document and what they declare, each look-up in constant time.
//
// A schema without a target namespace that others include belongs to their namespaces, each of which then has
// what it declares; one that nobody includes is of no namespace, and answers for that of the definitions too.
class SchemaSet {
 public:
  /// What a schema declares at its top, by the element that declares it.
  enum class Kind : wchar_t { element = L'e', complexType = L'c', simpleType = L's', group = L'g' };
  using Kinds = std::initializer_list<Kind>;

  /// Where the names of a reference are looked for: in a namespace, or with none in schemas near the
  /// reference.
  struct Place {
    /// Null for no namespace.
    tovin::WideString uri;
    std::vector<std::wstring> scopes;
  };

  /// Borrows the document; null for none.
  explicit SchemaSet(const tovin::iNode* definitions = nullptr) : definitions_(definitions) {}

  // Told while the files are loaded.
  void addInclusion(tovin::iNode* includer, tovin::iNode* fileRoot);
  void addFileRoot(const tovin::iNode* root);

  /// Whether the schemas were asked for; the failure of the first time stays.
  bool asked = false;
  std::optional<tovin::Exception> failure;

  /// All schemas at once, after the files. "Too many namespaces share the schemas that they include".
  void addAll(const tovin::NodeReferenceSet& schemaNodes);
  const tovin::Array<CWsdlParser::CSchema>& schemas() const noexcept { return schemas_; }

  /// The schema that encloses a node; null if none.
  const CWsdlParser::CSchema* enclosing(const tovin::iNode* node) const;
  const CWsdlParser::CSchema* find(const tovin::iNode* schemaNode) const;
  /// The first of a namespace; null if none.
  const CWsdlParser::CSchema* findFirst(const Place& place) const;
  /// The target namespaces that enclose a node, as the document writes them: those of its schema, else that
  /// of the definitions. Never empty; null for none.
  std::vector<tovin::WideString> namespacesAround(const tovin::iNode* node) const;

  /// What a prefix is bound to where it is written; of no prefix the default namespace. Null if nothing.
  tovin::WideString boundAt(Origin origin, std::wstring_view prefix) const;
  /// "Can't find namespace %ls\n", "Can't derive target namespace from ns-name %ls".
  tovin::WideString namespaceOf(Origin origin, const QualifiedName& name) const;

  Place placeOf(Origin origin, const QualifiedName& name) const;
  Place placeOf(const wchar_t* uri) const;
  /// The first declaration of the name; one that matches exactly goes before one that matches folded.
  tovin::iNode* find(const Place& place, Kinds kinds, std::wstring_view name) const;
  /// The same in one schema, which may be one of another document.
  tovin::iNode* findIn(const CWsdlParser::CSchema& schema, Kinds kinds, std::wstring_view name) const;

 private:
  const Surroundings& surroundings() const;
  tovin::WideString definitionsTarget() const;
  void shareNamespaces();
  // Gives a namespace, null for none, to all that a schema includes and that has none of its own.
  void share(const tovin::iNode* includer, const tovin::WideString& uri);
  bool admit(const tovin::iNode* included, const tovin::WideString& uri);
  void countShared(size_t count);
  std::vector<tovin::WideString> membershipsOf(const tovin::iNode* schemaNode) const;
  std::vector<std::wstring> scopesOf(const tovin::iNode* schemaNode) const;
  std::wstring ownScope(const tovin::iNode* schemaNode) const;
  void index(const std::vector<std::wstring>& scopes, tovin::iNode* declaration);

  // The namespaces of a schema that has none of its own, each once, in the order of inclusion.
  struct Membership {
    std::vector<tovin::WideString> uris;
    std::unordered_set<std::wstring> known;
  };

  const tovin::iNode* definitions_;
  tovin::Array<CWsdlParser::CSchema> schemas_;
  Surroundings::Schemas positions_;
  // In the order in which the files were loaded.
  std::vector<tovin::Ptr<tovin::iNode>> includers_;
  std::unordered_map<const tovin::iNode*, std::vector<tovin::Ptr<tovin::iNode>>> inclusions_;
  std::unordered_set<const tovin::iNode*> included_;
  std::unordered_map<const tovin::iNode*, Membership> memberships_;
  size_t shared_ = 0;
  Surroundings::Roots fileRoots_;
  mutable std::optional<Surroundings> surroundings_;
  // The first schema of each scope.
  std::unordered_map<std::wstring, size_t> scopes_;
  std::unordered_map<std::wstring, tovin::iNode*> declarations_;
};
