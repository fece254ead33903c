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

// The schemas of a document and what they declare, each look-up in constant time.
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

  // Told while the files are loaded.
  void setIncluder(const tovin::iNode* fileRoot, tovin::iNode* schema) { includers_[fileRoot] = schema; }
  void addFileRoot(const tovin::iNode* root) { fileRoots_.insert(root); }

  /// Whether the schemas were asked for; the failure of the first time stays.
  bool asked = false;
  std::optional<std::wstring> failure;

  void add(tovin::iNode* definitions, tovin::iNode* schemaNode);
  const tovin::Array<CWsdlParser::CSchema>& schemas() const noexcept { return schemas_; }

  /// The schema that encloses a node; null if none.
  const CWsdlParser::CSchema* enclosing(const tovin::iNode* node) const;
  const CWsdlParser::CSchema* find(const tovin::iNode* schemaNode) const;
  /// The target namespace of what a schema declares, as the document writes it; null if none.
  tovin::WideString effectiveNamespace(const tovin::iNode* definitions, const tovin::iNode* schemaNode) const;

  /// What a prefix is bound to where a node stands; of no prefix the default namespace. Null if nothing.
  tovin::WideString boundAt(const tovin::iNode* node, std::wstring_view prefix) const;
  /// "Can't find namespace %ls\n", "Can't derive target namespace from ns-name %ls".
  tovin::WideString namespaceOf(const tovin::iNode* node, const QualifiedName& name) const;

  Place placeOf(const tovin::iNode* node, const QualifiedName& name) const;
  Place placeOf(const wchar_t* uri) const;
  Place placeOf(const CWsdlParser::CSchema& schema) const;
  bool exists(const Place& place) const;
  /// The first declaration of the name; one that matches exactly goes before one that matches folded.
  tovin::iNode* find(const Place& place, Kinds kinds, std::wstring_view name) const;

 private:
  // The nearest node outward that declares namespaces at all, itself included; null if none.
  const tovin::iNode* nearestDeclaring(const tovin::iNode* node) const;
  const tovin::iNode* outward(const tovin::iNode* node) const;
  std::vector<std::wstring> scopesOf(tovin::iNode* definitions, const tovin::iNode* schemaNode) const;
  std::wstring ownScope(const tovin::iNode* schemaNode) const;
  void index(const std::vector<std::wstring>& scopes, tovin::iNode* declaration);

  tovin::Array<CWsdlParser::CSchema> schemas_;
  std::unordered_map<const tovin::iNode*, size_t> positions_;
  std::unordered_map<const tovin::iNode*, tovin::iNode*> includers_;
  std::unordered_set<const tovin::iNode*> fileRoots_;
  // The answers of nearestDeclaring, so that deep trees are not climbed for each name. Counted: a node that
  // is asked about may belong to another document.
  mutable std::unordered_map<const tovin::iNode*,
                             std::pair<tovin::Ptr<tovin::iNode>, tovin::Ptr<tovin::iNode>>>
      declaring_;
  std::unordered_set<std::wstring> scopes_;
  std::unordered_map<std::wstring, tovin::iNode*> declarations_;
};
