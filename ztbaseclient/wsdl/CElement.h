#pragma once

#include "ztbaseclient/wsdl/CNamespaceHolder.h"
#include "ztbaseclient/wsdl/CNodeHolder.h"

/// One member of a type, the item of an array, or one value of an enumeration.
///
/// - Shape: the type as the schema writes it, with its prefix, ending in "[]" where it may occur more than
///   once; the member's own name where the type is written inside it; empty where neither says one.
/// - Occurrence bounds and nillable are properties of the node; a reference has the node of what it refers
///   to.
class ZTBASECLIENT_API CWsdlParser::CElement : public CWsdlParser::CNamespaceHolder,
                                               public CWsdlParser::CNodeHolder {
 public:
  static constexpr const char* ClassName = "CElement";
  static tovin::LeakDetector m_leakDetector;

  /// "[]" stands somewhere behind the type's first character.
  bool IsArrayType() const noexcept;

  tovin::WideString name;
  tovin::WideString type;
  /// False when the member may be left out, by its own bounds or by those of what stands around it.
  bool required = true;

 private:
  tovin::LeakRegistration<CElement> registration_;
};
