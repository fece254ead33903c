#pragma once

#include "tovin/Array.h"
#include "ztbaseclient/wsdl/CNamespace.h"

/// What a value that names types knows: the namespaces declared where it was read.
class ZTBASECLIENT_API CWsdlParser::CNamespaceHolder {
 public:
  static constexpr const char* ClassName = "CNamespaceHolder";
  static tovin::LeakDetector m_leakDetector;

  virtual ~CNamespaceHolder() = 0;

  tovin::Array<CNamespace> namespaces;

 protected:
  CNamespaceHolder() = default;
  CNamespaceHolder(const CNamespaceHolder&) = default;
  CNamespaceHolder(CNamespaceHolder&&) noexcept = default;
  CNamespaceHolder& operator=(const CNamespaceHolder&) = default;
  CNamespaceHolder& operator=(CNamespaceHolder&&) noexcept = default;

 private:
  tovin::LeakRegistration<CNamespaceHolder> registration_;
};
