#pragma once

#include "ztbaseclient/Export.h"

/// Reads WSDL documents into node trees.
class ZTBASECLIENT_API CWsdlParser {
 public:
  static constexpr const char* ClassName = "CWsdlParser";

  class XMLParser;
};
