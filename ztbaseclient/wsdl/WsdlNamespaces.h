#pragma once

/// The namespaces that the reader knows, by their URI without scheme. Sources: WSDL 1.1, SOAP 1.1 and 1.2,
/// XML Schema (1999 and 2001).
namespace wsdlnamespaces {

inline constexpr wchar_t Wsdl[] = L"schemas.xmlsoap.org/wsdl";
inline constexpr wchar_t WsdlSoap11[] = L"schemas.xmlsoap.org/wsdl/soap";
inline constexpr wchar_t WsdlSoap12[] = L"schemas.xmlsoap.org/wsdl/soap12";
/// The only one with its slash.
inline constexpr wchar_t WsdlHttp[] = L"schemas.xmlsoap.org/wsdl/http/";
inline constexpr wchar_t SoapEncoding[] = L"schemas.xmlsoap.org/soap/encoding";
inline constexpr wchar_t Soap12Encoding[] = L"www.w3.org/2003/05/soap-encoding";
inline constexpr wchar_t XmlSchema99[] = L"www.w3.org/1999/XMLSchema";
inline constexpr wchar_t XmlSchema[] = L"www.w3.org/2001/XMLSchema";
/// What the prefix "xml" is bound to everywhere, with its scheme.
inline constexpr wchar_t Xml[] = L"http://www.w3.org/XML/1998/namespace";

}  // namespace wsdlnamespaces
