#pragma once

#include "tovin/BaseString.h"
#include "tovin/FrameworkClass.h"
#include "ztbaseclient/wsdl/CWsdlParser.h"

/// A namespace: the prefix that is bound to it, and its URI taken apart at the scheme.
///
///     CWsdlParser::CNamespace space;
///     space.setUrl(L"https://example.org/orders");
///     space.getUrl();       // example.org/orders
///     space.getProtocol();  // https://
///
/// - Shape: of a scheme only "http" and "https" are told apart; any other counts as http.
class ZTBASECLIENT_API CWsdlParser::CNamespace {
 public:
  static constexpr const char* ClassName = "CNamespace";
  static tovin::LeakDetector m_leakDetector;

  CNamespace() = default;
  CNamespace(const CNamespace&) = default;
  CNamespace(CNamespace&&) noexcept = default;
  CNamespace& operator=(const CNamespace&) = default;
  CNamespace& operator=(CNamespace&&) noexcept = default;
  virtual ~CNamespace();

  /// The name stays as it is.
  void setUrl(const wchar_t* text);
  const wchar_t* getUrl() const noexcept { return url_; }
  const wchar_t* getProtocol() const noexcept { return protocol_; }

  /// Url and protocol, ASCII case ignored; not the name.
  bool operator==(const CNamespace& other) const noexcept;
  bool isWsdlSoap11SchemaNs() const noexcept;
  bool isWsdlSoap12SchemaNs() const noexcept;
  bool isXmlSchema99Ns() const noexcept;
  /// Of 2001 or else 1999.
  bool isXmlSchemaNs() const noexcept;
  /// Of SOAP 1.1.
  bool isSoapEncodingNs() const noexcept;
  bool isSoap12EncodingNs() const noexcept;

  /// The prefix, empty for a default namespace; "targetNamespace" for a schema's.
  tovin::WideString name;

 protected:
  /// Without one slash at its end the url is the text.
  bool urlIsEqual(const wchar_t* text) const noexcept;

 private:
  tovin::WideString url_;
  tovin::WideString protocol_;
  tovin::LeakRegistration<CNamespace> registration_;
};
