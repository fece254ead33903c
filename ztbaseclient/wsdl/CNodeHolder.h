#pragma once

#include "tovin/FrameworkClass.h"
#include "tovin/Ptr.h"
#include "tovin/iNode.h"
#include "ztbaseclient/wsdl/CWsdlParser.h"

/// A value that was read from a node of the document.
///
/// - Ownership: holds a counted reference, which copies share; null when the value was not read from a node.
class ZTBASECLIENT_API CWsdlParser::CNodeHolder {
 public:
  static constexpr const char* ClassName = "CNodeHolder";
  static tovin::LeakDetector m_leakDetector;

  virtual ~CNodeHolder() = 0;

  tovin::Ptr<tovin::iNode> node;

 protected:
  CNodeHolder() = default;
  CNodeHolder(const CNodeHolder&) = default;
  CNodeHolder(CNodeHolder&&) noexcept = default;
  CNodeHolder& operator=(const CNodeHolder&) = default;
  CNodeHolder& operator=(CNodeHolder&&) noexcept = default;

 private:
  tovin::LeakRegistration<CNodeHolder> registration_;
};
