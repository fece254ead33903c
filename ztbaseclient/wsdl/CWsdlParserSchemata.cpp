// The schemas of a document, and the look-ups in them.
#include "tovin/iXPathParser.h"
#include "tovinCore/Guard.h"
#include "tovinCore/Units.h"
#include "ztbaseclient/wsdl/CElement.h"
#include "ztbaseclient/wsdl/CPart.h"
#include "ztbaseclient/wsdl/TypeBuilder.h"
#include "ztbaseclient/wsdl/WsdlParserState.h"

using tovin::guarded;
using tovin::iNode;
using Kind = SchemaSet::Kind;

namespace {

constexpr wchar_t requiredElements[] = L"//*[local-name()='element'][@minOccurs>=1 or not(@minOccurs)]";
constexpr wchar_t optionalElements[] = L"//*[local-name()='element'][@minOccurs<1]";
constexpr wchar_t formlessElements[] = L"//*[local-name()='element'][not(@form)]";

const wchar_t* orEmpty(const wchar_t* text) { return text ? text : L""; }

// Puts a text on each element declaration that a query selects: textFor(schema around it).
template <class TextFor>
void annotate(const iNode* root, const wchar_t* query, const SchemaSet& schemas, const wchar_t* property,
              TextFor&& textFor) {
  tovin::NodeReferenceSet selected;
  root->query(query, tovin::iXPathParser::elements, selected);
  for (size_t i = 0; i < selected.getSize(); ++i) {
    if (const CWsdlParser::CSchema* schema = schemas.enclosing(selected[i])) {
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
  const SchemaSet& schemas = state_->schemas;
  for (const CSchema& schema : schemas.schemas()) markGlobal(schema.node.get());
  annotate(root, requiredElements, schemas, L"required", [](const CSchema&) { return L"true"; });
  annotate(root, optionalElements, schemas, L"required", [](const CSchema&) { return L"false"; });
  annotate(root, formlessElements, schemas, L"form", [](const CSchema& schema) {
    return schema.getIsElementFormQualified() ? L"qualified" : L"unqualified";
  });
}

void CWsdlParser::buildSchemas(iNode* types) {
  tovin::NodeReferenceSet nodes;
  state_->search.findNodes(types, L"schema", nodes);
  for (size_t i = 0; i < nodes.getSize(); ++i) loadExternalSchemata(state_->wsdlUrl, types, nodes[i]);
  nodes.clear();
  state_->search.findNodes(types, L"schema", nodes);
  state_->schemas.addAll(nodes);
  if (nodes.getSize() > 0) annotateElements(requireRoot());
}

const tovin::Array<CWsdlParser::CSchema>& CWsdlParser::GetSchemaInfo() {
  return guarded({ClassName, "GetSchemaInfo"}, [&]() -> const tovin::Array<CSchema>& {
    SchemaSet& schemas = state_->schemas;
    if (schemas.failure) throw tovin::Exception(*schemas.failure);
    iNode* root = requireRoot();
    if (schemas.asked) return schemas.schemas();
    schemas.asked = true;
    iNode* types = state_->search.findNode(root, L"types");
    if (!types) return schemas.schemas();
    try {
      buildSchemas(types);
    } catch (const tovin::Exception& e) {
      schemas.failure = e.withoutTrail();
      throw;
    }
    return schemas.schemas();
  });
}

const CWsdlParser::CSchema& CWsdlParser::GetSchemaByTargetNS(const wchar_t* uri) {
  return guarded({ClassName, "GetSchemaByTargetNS"}, [&]() -> const CSchema& {
    GetSchemaInfo();
    if (const CSchema* schema = state_->schemas.findFirst(state_->schemas.placeOf(uri))) return *schema;
    throw tovin::Exception(L"Can't find schema with targetNamespace=%ls", orEmpty(uri));
  });
}

const CWsdlParser::CSchema& CWsdlParser::FindSchemaContainingElement(const wchar_t* uri,
                                                                     const wchar_t* name) {
  return guarded({ClassName, "FindSchemaContainingElement"}, [&]() -> const CSchema& {
    GetSchemaInfo();
    const SchemaSet& schemas = state_->schemas;
    return *schemas.enclosing(
        requireDeclaredElement(schemas, schemas.placeOf(uri), orEmpty(name), orEmpty(name)));
  });
}

const CWsdlParser::CSchema& CWsdlParser::FindSchemaContainingCustomType(const wchar_t* uri,
                                                                        const wchar_t* name) {
  return guarded({ClassName, "FindSchemaContainingCustomType"}, [&]() -> const CSchema& {
    GetSchemaInfo();
    const SchemaSet& schemas = state_->schemas;
    return *schemas.enclosing(
        requireDeclaredType(schemas, schemas.placeOf(uri), orEmpty(name), orEmpty(name)));
  });
}

tovin::WideString CWsdlParser::FindDefiningNamespace(const iNode* node, const wchar_t* prefix) {
  return guarded({ClassName, "FindDefiningNamespace"}, [&] {
    const std::wstring_view wanted = orEmpty(prefix);
    const tovin::WideString uri = state_->schemas.boundAt(node, wanted);
    if (uri.isNull() && !wanted.empty()) throw tovin::Exception(L"Can't find namespace %ls\n", prefix);
    return uri.isNull() ? tovin::WideString(L"") : uri;
  });
}

CWsdlParser::CNamespace CWsdlParser::FindNamespaceInDefinitions(const wchar_t* prefix) {
  return guarded({ClassName, "FindNamespaceInDefinitions"}, [&] {
    CNamespace space;
    space.name = orEmpty(prefix);
    const tovin::WideString uri = declaredOn(requireRoot(), space.name.view());
    if (uri.isNull()) throw tovin::Exception(L"Can't find namespace %ls\n", space.name);
    space.setUrl(uri);
    return space;
  });
}

tovin::WideString CWsdlParser::FindTargetNamespace(const iNode* node) {
  return guarded({ClassName, "FindTargetNamespace"}, [&] {
    requireRoot();
    const tovin::WideString uri = state_->schemas.namespacesAround(node).front();
    return uri.isNull() ? tovin::WideString(L"") : uri;
  });
}

tovin::WideString CWsdlParser::FindTargetNamespace(const CCustomType& type) {
  return guarded({ClassName, "FindTargetNamespace(type)"}, [&] {
    for (const tovin::WideString& uri : state_->schemas.namespacesAround(type.node.get())) {
      CNamespace space;
      space.setUrl(uri);
      if (!uri.isNull() && space == type.typeNamespace) return uri;
    }
    return FindTargetNamespace(type.node.get());
  });
}

CWsdlParser::Definition CWsdlParser::requireElement(const CPart& part) {
  GetSchemaInfo();
  const QualifiedName name(part.element);
  if (!name.wellFormed) throw tovin::Exception(L"Can't understand custom type: \"%ls\"", name.text);
  const SchemaSet::Place place = state_->schemas.placeOf(Origin::of(part), name);
  return {requireDeclaredElement(state_->schemas, place, name.local, name.text), place.uri, {}};
}

CWsdlParser::CElement CWsdlParser::GetSchemaElement_Doc(const CPart& part) {
  return guarded({ClassName, "GetSchemaElement_Doc"},
                 [&] { return elementValue(state_->schemas, requireElement(part).node); });
}

const CWsdlParser::CSchema& CWsdlParser::GetSchemaForPartDoc(const CPart& part) {
  return guarded({ClassName, "GetSchemaForPartDoc"},
                 [&]() -> const CSchema& { return *state_->schemas.enclosing(requireElement(part).node); });
}

CWsdlParser::CElement CWsdlParser::GetMatchingSchemaElementDoc(const CSchema& schema, const wchar_t* name) {
  return guarded({ClassName, "GetMatchingSchemaElementDoc"}, [&] {
    const QualifiedName wanted{tovin::WideString(name)};
    requireSearchable(schema);
    iNode* element = state_->schemas.findIn(schema, {Kind::element}, wanted.local);
    if (!element) {
      throw tovin::Exception(L"Cannot find a schema with targetNamespace = %ls and element = %ls",
                             findAttrVal(schema.node.get(), L"targetNamespace"), orEmpty(name));
    }
    return elementValue(state_->schemas, element);
  });
}
