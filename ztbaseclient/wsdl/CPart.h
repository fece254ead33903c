#pragma once

#include "ztbaseclient/wsdl/CNamespaceHolder.h"
#include "ztbaseclient/wsdl/CNodeHolder.h"

/// One part of a message: it names a type or an element, as written.
class ZTBASECLIENT_API CWsdlParser::CPart : public CWsdlParser::CNamespaceHolder,
                                            public CWsdlParser::CNodeHolder {
 public:
  static constexpr const char* ClassName = "CPart";
  static tovin::LeakDetector m_leakDetector;

  tovin::WideString name;
  tovin::WideString type;
  tovin::WideString element;

 private:
  tovin::LeakRegistration<CPart> registration_;
};
