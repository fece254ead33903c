#pragma once

#include <functional>
#include <iosfwd>
#include <string>

#include "ztbaseclient/wsdl/CWsdlParser.h"
#include "ztclient/answers/Json.h"

/// Is told what a WSDL document says, piece by piece: an answer may be far longer than the document.
class WsdlVisitor {
 public:
  virtual ~WsdlVisitor() = default;
  /// Target namespace and service.
  virtual void onDocument(const Json& document) = 0;
  /// A port with its binding.
  virtual void onPort(const Json& port) = 0;
  virtual void onOperation(const Json& operation) = 0;
  /// \param direction "input" or "output", of the operation before.
  virtual void onMessage(const char* direction, const Json& message) = 0;
  /// \param resolved what resolvedText made of its type, or of the error that kept it from being found; null
  /// unless types are wanted.
  virtual void onPart(const Json& part, const std::string* resolved) = 0;
  virtual void onEnd(const Json& warnings) = 0;
  /// Kept for other parts of the same type.
  virtual std::string resolvedText(const Json& resolved) const = 0;
};

/// Tells a visitor everything down to the parts of messages, and the warnings that came up. Errors come
/// before the visitor is told anything.
/// \param types whether the types of the parts are resolved. \param failure is told each exception of which
/// the answer has the message only.
using TypeFailure = std::function<void(const tovin::Exception& e)>;
void visitWsdl(CWsdlParser& parser, bool types, WsdlVisitor& visitor, const TypeFailure& failure = {});

/// All of it as one indented JSON document.
void writeWsdlJson(CWsdlParser& parser, bool types, std::ostream& out, const TypeFailure& failure = {});
/// The same, read back: for documents whose answers are small.
Json wsdlToJson(CWsdlParser& parser, bool types);
