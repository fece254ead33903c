#pragma once

#include "ztbaseclient/wsdl/CBinding.h"

/// One place where a service is offered, with the binding that is spoken there.
class ZTBASECLIENT_API CWsdlParser::CPort : public CWsdlParser::CNodeHolder {
 public:
  static constexpr const char* ClassName = "CPort";
  static tovin::LeakDetector m_leakDetector;

  tovin::WideString name;
  CBinding binding;
  tovin::WideString address;
  /// False for an address of another kind, such as SOAP 1.2.
  bool soap11OrHttp = false;

 private:
  tovin::LeakRegistration<CPort> registration_;
};
