#pragma once

#include "ztbaseclient/wsdl/CMsg.h"

/// An operation: how and where it is called, and what goes in and out.
///
/// - The node is the binding's operation first and the port type's once that was read; both carry the
///   property "encoding", the "use" of the input's SOAP body.
class ZTBASECLIENT_API CWsdlParser::COperation : public CWsdlParser::CNodeHolder {
 public:
  static constexpr const char* ClassName = "COperation";
  static tovin::LeakDetector m_leakDetector;

  tovin::WideString name;
  tovin::WideString soapAction;
  bool documentStyle = false;
  CMsg input;
  CMsg output;
  tovin::WideString portName;
  tovin::WideString portTypeName;
  /// Where the port listens.
  tovin::WideString address;
  tovin::WideString inputName;
  tovin::WideString outputName;

 private:
  tovin::LeakRegistration<COperation> registration_;
};
