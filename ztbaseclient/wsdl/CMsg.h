#pragma once

#include "tovin/Array.h"
#include "ztbaseclient/wsdl/CPart.h"

/// A message and its parts in document order.
class ZTBASECLIENT_API CWsdlParser::CMsg : public CWsdlParser::CNodeHolder {
 public:
  static constexpr const char* ClassName = "CMsg";
  static tovin::LeakDetector m_leakDetector;

  tovin::WideString name;
  /// Of the SOAP body that the binding gives for this message.
  tovin::WideString messageNamespace;
  tovin::Array<CPart> parts;

 private:
  tovin::LeakRegistration<CMsg> registration_;
};
