// The schemas of a document, and the look-ups in them.
#include <unordered_map>
#include <vector>

#include "tovin/iXPathParser.h"
#include "tovinCore/Guard.h"
#include "tovinCore/Units.h"
#include "ztbaseclient/wsdl/CElement.h"
#include "ztbaseclient/wsdl/CPart.h"
#include "ztbaseclient/wsdl/TypeBuilder.h"
#include "ztbaseclient/wsdl/WsdlParserState.h"

using tovin::guarded;
using tovin::iNode;

namespace {

constexpr wchar_t requiredElements[] = L"//*[local-name()='element'][@minOccurs>=1 or not(@minOccurs)]";
constexpr wchar_t optionalElements[] = L"//*[local-name()='element'][@minOccurs<1]";
constexpr wchar_t formlessElements[] = L"//*[local-name()='element'][not(@form)]";

// Finds the schema around each of many nodes; together they cost one way up through the tree.
class SchemaFinder {
 public:
  explicit SchemaFinder(const SchemaSet& schemas) : schemas_(schemas) {}

  const CWsdlParser::CSchema* around(const iNode* node) {
    std::vector<const iNode*> way;
    const CWsdlParser::CSchema* schema = nullptr;
    for (; node; node = node->findParent()) {
      const auto met = met_.find(node);
      if (met != met_.end()) schema = met->second;
      if (met != met_.end() || (schema = schemas_.find(node))) break;
      way.push_back(node);
    }
    for (const iNode* below : way) met_[below] = schema;
    return schema;
  }

 private:
  const SchemaSet& schemas_;
  std::unordered_map<const iNode*, const CWsdlParser::CSchema*> met_;
};

// Puts a text on each element declaration that a query selects: textFor(schema around it).
template <class TextFor>
void annotate(const iNode* root, const wchar_t* query, SchemaFinder& finder, const wchar_t* property,
              TextFor&& textFor) {
  tovin::NodeReferenceSet selected;
  root->query(query, tovin::iXPathParser::elements, selected);
  for (size_t i = 0; i < selected.getSize(); ++i) {
    if (const CWsdlParser::CSchema* schema = finder.around(selected[i])) {
      putText(selected[i], property, textFor(*schema));
    }
  }
}

void markGlobal(iNode* schemaNode) {
  forChildren(schemaNode, [](iNode* child) {
    if (isNamed(child, L"element")) putText(child, L"scope", L"global");
  });
}

}  // namespace

// One query for the whole document rather than one for each schema, whose queries would all begin at its
// root.
void CWsdlParser::annotateElements(iNode* root) {
  SchemaFinder finder(state_->schemas);
  for (const CSchema& schema : state_->schemas.schemas()) markGlobal(schema.node.get());
  annotate(root, requiredElements, finder, L"required", [](const CSchema&) { return L"true"; });
  annotate(root, optionalElements, finder, L"required", [](const CSchema&) { return L"false"; });
  annotate(root, formlessElements, finder, L"form", [](const CSchema& schema) {
    return schema.getIsElementFormQualified() ? L"qualified" : L"unqualified";
  });
}

void CWsdlParser::buildSchemas(iNode* types) {
  tovin::NodeReferenceSet nodes;
  state_->search.findNodes(types, L"schema", nodes);
  for (size_t i = 0; i < nodes.getSize(); ++i) loadExternalSchemata(state_->wsdlUrl, types, nodes[i]);
  nodes.clear();
  state_->search.findNodes(types, L"schema", nodes);
  for (size_t i = 0; i < nodes.getSize(); ++i) state_->schemas.add(requireRoot(), nodes[i]);
  if (nodes.getSize() > 0) annotateElements(requireRoot());
}

const tovin::Array<CWsdlParser::CSchema>& CWsdlParser::GetSchemaInfo() {
  return guarded({ClassName, "GetSchemaInfo"}, [&]() -> const tovin::Array<CSchema>& {
    SchemaSet& schemas = state_->schemas;
    if (schemas.failure) throw tovin::Exception(schemas.failure->c_str());
    iNode* root = requireRoot();
    if (schemas.asked) return schemas.schemas();
    schemas.asked = true;
    iNode* types = state_->search.findNode(root, L"types");
    if (!types) return schemas.schemas();
    try {
      buildSchemas(types);
    } catch (const tovin::Exception& e) {
      schemas.failure = e.getMessage();
      throw;
    }
    return schemas.schemas();
  });
}

const CWsdlParser::CSchema& CWsdlParser::GetSchemaByTargetNS(const wchar_t* uri) {
  return guarded({ClassName, "GetSchemaByTargetNS"}, [&]() -> const CSchema& {
    const tovin::Array<CSchema>& schemas = GetSchemaInfo();
    for (const bool exact : {true, false}) {
      for (const CSchema& schema : schemas) {
        const tovin::WideString own = state_->schemas.effectiveNamespace(requireRoot(), schema.node.get());
        const bool same = exact ? own == uri : tovin::equalFolded(own.c_str(), uri);
        if (same) return schema;
      }
    }
    throw tovin::Exception(L"Can't find schema with targetNamespace=%ls", uri);
  });
}

const CWsdlParser::CSchema& CWsdlParser::FindSchemaContainingElement(const wchar_t* uri,
                                                                     const wchar_t* name) {
  return guarded({ClassName, "FindSchemaContainingElement"}, [&]() -> const CSchema& {
    GetSchemaInfo();
    const SchemaSet& schemas = state_->schemas;
    return *schemas.enclosing(requireDeclaredElement(schemas, schemas.placeOf(uri), name ? name : L"", name));
  });
}

const CWsdlParser::CSchema& CWsdlParser::FindSchemaContainingCustomType(const wchar_t* uri,
                                                                        const wchar_t* name) {
  return guarded({ClassName, "FindSchemaContainingCustomType"}, [&]() -> const CSchema& {
    GetSchemaInfo();
    const SchemaSet& schemas = state_->schemas;
    return *schemas.enclosing(requireDeclaredType(schemas, schemas.placeOf(uri), name ? name : L"", name));
  });
}

tovin::WideString CWsdlParser::FindDefiningNamespace(const iNode* node, const wchar_t* prefix) {
  return guarded({ClassName, "FindDefiningNamespace"}, [&] {
    const std::wstring_view wanted = prefix ? prefix : L"";
    const tovin::WideString uri = state_->schemas.boundAt(node ? node : requireRoot(), wanted);
    if (uri.isNull() && !wanted.empty()) throw tovin::Exception(L"Can't find namespace %ls\n", prefix);
    return uri.isNull() ? tovin::WideString(L"") : uri;
  });
}

CWsdlParser::CNamespace CWsdlParser::FindNamespaceInDefinitions(const wchar_t* prefix) {
  return guarded({ClassName, "FindNamespaceInDefinitions"}, [&] {
    CNamespace space;
    space.name = prefix ? prefix : L"";
    const tovin::WideString uri = declaredOn(requireRoot(), space.name.view());
    if (uri.isNull()) throw tovin::Exception(L"Can't find namespace %ls\n", space.name);
    space.setUrl(uri);
    return space;
  });
}

tovin::WideString CWsdlParser::FindTargetNamespace(const iNode* node) {
  return guarded({ClassName, "FindTargetNamespace"}, [&] {
    const CSchema* schema = state_->schemas.enclosing(node);
    const tovin::WideString uri =
        state_->schemas.effectiveNamespace(requireRoot(), schema ? schema->node.get() : nullptr);
    return uri.isNull() ? tovin::WideString(L"") : uri;
  });
}

iNode* CWsdlParser::requireElement(const CPart& part) {
  GetSchemaInfo();
  const QualifiedName name(part.element);
  if (!name.wellFormed) throw tovin::Exception(L"Can't understand custom type: \"%ls\"", name.text);
  const iNode* where = part.node ? part.node.get() : requireRoot();
  const SchemaSet::Place place = state_->schemas.placeOf(where, name);
  return requireDeclaredElement(state_->schemas, place, name.local, name.text);
}

CWsdlParser::CElement CWsdlParser::GetSchemaElement_Doc(const CPart& part) {
  return guarded({ClassName, "GetSchemaElement_Doc"},
                 [&] { return elementValue(state_->schemas, requireElement(part)); });
}

const CWsdlParser::CSchema& CWsdlParser::GetSchemaForPartDoc(const CPart& part) {
  return guarded({ClassName, "GetSchemaForPartDoc"},
                 [&]() -> const CSchema& { return *state_->schemas.enclosing(requireElement(part)); });
}

CWsdlParser::CElement CWsdlParser::GetMatchingSchemaElementDoc(const CSchema& schema, const wchar_t* name) {
  return guarded({ClassName, "GetMatchingSchemaElementDoc"}, [&] {
    if (!schema.node) throw tovin::Exception(L"Cannot dereference a NULL pointer");
    const QualifiedName wanted{tovin::WideString(name)};
    const SchemaSet::Place place = state_->schemas.placeOf(schema);
    return elementValue(state_->schemas, requireDeclaredElement(state_->schemas, place, wanted.local, name));
  });
}
