#pragma once

#include <memory>
#include <string>
#include <unordered_set>

#include "ztbaseclient/wsdl/CWsdlParser.h"
#include "ztbaseclient/wsdl/ExternalSchemaRecord.h"
#include "ztbaseclient/wsdl/NodeSearch.h"
#include "ztbaseclient/wsdl/SchemaSet.h"
#include "ztbaseclient/wsdl/XMLParser.h"

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
  // The folded names of the files of these records.
  std::unordered_set<std::wstring> heldFiles;
  SchemaSet schemas;
  tovin::WideString lastAtomicType;

  // All that was read from the document, before another one takes its place.
  void forgetAnswers() {
    search.soapPrefixes().clear();
    definitions.reset();
    externalSchemas.clear();
    heldFiles.clear();
    schemas = SchemaSet();
    lastAtomicType = L"";
  }
};
