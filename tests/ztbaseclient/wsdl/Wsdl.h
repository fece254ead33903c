#pragma once

#include <string>

#include "tests/support/Bytes.h"
#include "ztbaseclient/wsdl/CCustomType.h"
#include "ztbaseclient/wsdl/CPort.h"
#include "ztbaseclient/wsdl/CWsdlParser.h"
#include "ztclient/answers/Json.h"

/// WSDL documents as tests write them.
namespace wsdl {

/// The declarations that every small document has: "" and "w" WSDL, "soap", "xs", "enc", "t" for urn:t.
extern const std::string declarations;

/// Definitions with target namespace urn:t around a text.
std::string definitions(const std::string& inside, const std::string& attributes = "targetNamespace='urn:t'");
/// A service with one operation whose input has one part, and what stands under "types".
std::string withPart(const std::string& part, const std::string& types, const std::string& outside = {});
/// A schema of target namespace urn:t.
std::string schema(const std::string& inside, const std::string& attributes = "targetNamespace='urn:t'");

void parse(CWsdlParser& parser, const std::string& document);

/// What the command prints as JSON.
Json toJson(CWsdlParser& parser, bool types);
/// What the part of withPart resolves to, in short: "complex T : base {a: xs:int, b: t:B[] optional}", or the
/// error.
std::string resolved(CWsdlParser& parser);
std::string resolved(const std::string& document, bool backwardCompatible = false);

}  // namespace wsdl
