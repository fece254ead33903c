#pragma once

#include "tovin/Array.h"
#include "ztbaseclient/wsdl/COperation.h"

/// How the operations of a port type are called.
class ZTBASECLIENT_API CWsdlParser::CBinding : public CWsdlParser::CNodeHolder {
 public:
  static constexpr const char* ClassName = "CBinding";
  static tovin::LeakDetector m_leakDetector;

  /// As the port refers to it.
  tovin::WideString name;
  /// The port type, as the binding refers to it.
  tovin::WideString type;
  tovin::WideString transport;
  tovin::WideString verb;
  bool documentStyle = false;
  tovin::Array<COperation> operations;

 private:
  tovin::LeakRegistration<CBinding> registration_;
};
