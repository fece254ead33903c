#pragma once

#include "ztbaseclient/wsdl/CNamespaceHolder.h"
#include "ztbaseclient/wsdl/CNodeHolder.h"

/// An XML Schema of the document, or of a file that it imports.
class ZTBASECLIENT_API CWsdlParser::CSchema : public CWsdlParser::CNamespaceHolder,
                                              public CWsdlParser::CNodeHolder {
 public:
  static constexpr const char* ClassName = "CSchema";
  static tovin::LeakDetector m_leakDetector;

  CSchema();
  const CNamespace& getTargetNamespace() const noexcept { return targetNamespace_; }
  const wchar_t* getTargetNamespaceProtocol() const noexcept { return targetNamespace_.getProtocol(); }
  void setTargetNamespace(const wchar_t* uri) { targetNamespace_.setUrl(uri); }
  bool getIsElementFormQualified() const noexcept { return elementFormQualified_; }
  void setIsElementFormQualified(bool qualified) noexcept { elementFormQualified_ = qualified; }
  bool getIsAttributeFormQualified() const noexcept { return attributeFormQualified_; }
  void setIsAttributeFormQualified(bool qualified) noexcept { attributeFormQualified_ = qualified; }

 private:
  CNamespace targetNamespace_;
  bool attributeFormQualified_ = false;
  bool elementFormQualified_ = false;
  tovin::LeakRegistration<CSchema> registration_;
};
