#pragma once

#include "ztbaseclient/wsdl/CNamespace.h"

/// A schema file that the document imports or includes.
struct CWsdlParser::ExternalSchemaRecord {
  /// The canonical name.
  tovin::WideString fileName;
  /// As the reference names it.
  tovin::WideString location;
  /// The file's target namespace; null for an included file, which belongs to the schema that includes it.
  CNamespace schemaNamespace;
  /// The root of the file, by now a child of the document's "types" node.
  tovin::Ptr<tovin::iNode> root;
  bool loaded = false;
};
