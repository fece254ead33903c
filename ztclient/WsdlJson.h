#pragma once

#include "ztbaseclient/wsdl/CWsdlParser.h"
#include "ztclient/Json.h"

/// What a WSDL document says: target namespace, service, ports down to the parts of messages, and the
/// warnings that came up. \param types every part also gets "resolved", its type or the error that kept it
/// from being found.
Json wsdlToJson(CWsdlParser& parser, bool types);

/// Reads a document; "-" is standard input.
void loadWsdl(CWsdlParser& parser, const std::string& file);
