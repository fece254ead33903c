#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "ztbaseclient/wsdl/CWsdlParser.h"
#include "ztbaseclient/wsdl/ExternalSchemaRecord.h"
#include "ztbaseclient/wsdl/NodeSearch.h"
#include "ztbaseclient/wsdl/SchemaSet.h"
#include "ztbaseclient/wsdl/TypeBuilder.h"
#include "ztbaseclient/wsdl/XMLParser.h"

// Roots of schema files by the folded names of the files.
using FilesByName = std::unordered_map<std::wstring, tovin::Ptr<tovin::iNode>>;

// An element or type of a schema, and the namespace that it was asked for in; null if in none.
struct CWsdlParser::Definition {
  tovin::iNode* node;
  tovin::WideString space;
};

// What the reader holds, its sources being several.
struct CWsdlParser::State {
  XMLParser xml;
  tovin::Ptr<tovin::iNode> root;
  tovin::WideString wsdlUrl;
  bool hasParsed = false;
  Style style = RPC;
  bool backwardCompatible = false;
  NodeSearch search;
  // Of the root; made when it is first asked for.
  std::unique_ptr<NamedChildren> definitions;
  tovin::Array<ExternalSchemaRecord> externalSchemas;
  // The files of these records.
  FilesByName heldFiles;
  SchemaSet schemas;
  // Of the schemas; made when they are first asked about.
  std::unique_ptr<TypeBuilder> types;
  tovin::WideString lastAtomicType;

  // Forgets all that was read from the document; another one takes its place, or none.
  void replaceDocument(tovin::iNode* next) {
    search.soapPrefixes().clear();
    definitions.reset();
    externalSchemas.clear();
    heldFiles.clear();
    lastAtomicType = L"";
    types.reset();
    schemas = SchemaSet(next);
    root = tovin::Ptr<tovin::iNode>(next);
  }
};
