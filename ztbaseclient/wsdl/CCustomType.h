#pragma once

#include "tovin/Array.h"
#include "ztbaseclient/wsdl/CElement.h"
#include "ztbaseclient/wsdl/CSchema.h"

/// A type that a schema of the document defines.
class ZTBASECLIENT_API CWsdlParser::CCustomType : public CWsdlParser::CNodeHolder {
 public:
  static constexpr const char* ClassName = "CCustomType";
  static tovin::LeakDetector m_leakDetector;

  bool hasSuperClass() const noexcept { return !superClass.isEmpty(); }

  /// Without array suffix and prefix.
  tovin::WideString name;
  /// The name of an array's item.
  tovin::WideString itemName = L"";
  CustomTypeKind kind = KindUnresolved;
  /// Members, the item of an array, or the values of an enumeration.
  tovin::Array<CElement> elements;
  /// Where the type is defined.
  CSchema schema;
  CNamespace typeNamespace;
  /// The type that this one extends, as written.
  tovin::WideString superClass = L"";

 private:
  tovin::LeakRegistration<CCustomType> registration_;
};
