#include "ztservice/load/Words.h"

#include <unordered_map>

namespace ztservice::parse {

namespace {

const std::unordered_map<std::string_view, Space> spaces = {
    {"http://www.w3.org/2001/XMLSchema", Space::schema},
    {"http://www.w3.org/2000/10/XMLSchema", Space::schema},
    {"http://www.w3.org/1999/XMLSchema", Space::schema},
    {"http://schemas.xmlsoap.org/wsdl/", Space::wsdl},
    {"http://schemas.xmlsoap.org/wsdl/soap/", Space::soap11},
    {"http://schemas.xmlsoap.org/wsdl/soap12/", Space::soap12},
    {"http://schemas.xmlsoap.org/wsdl/http/", Space::http},
    {"http://schemas.xmlsoap.org/wsdl/mime/", Space::mime},
    {"http://www.w3.org/XML/1998/namespace", Space::xml},
    {"urn:oasis:names:tc:entity:xmlns:xml:catalog", Space::catalog},
};

const std::unordered_map<std::string_view, Word> words = {
    {"abstract", Word::abstract},
    {"Action", Word::action},
    {"address", Word::address},
    {"all", Word::all},
    {"any", Word::any},
    {"anyAttribute", Word::anyAttribute},
    {"arrayType", Word::arrayType},
    {"attribute", Word::attribute},
    {"attributeFormDefault", Word::attributeFormDefault},
    {"attributeGroup", Word::attributeGroup},
    {"base", Word::base},
    {"binding", Word::binding},
    {"body", Word::body},
    {"catalog", Word::catalog},
    {"choice", Word::choice},
    {"complexContent", Word::complexContent},
    {"complexType", Word::complexType},
    {"content", Word::content},
    {"default", Word::defaultValue},
    {"definitions", Word::definitions},
    {"delegateSystem", Word::delegateSystem},
    {"delegateURI", Word::delegateUri},
    {"duration", Word::facet},
    {"element", Word::element},
    {"elementFormDefault", Word::elementFormDefault},
    {"encoding", Word::facet},
    {"encodingStyle", Word::encodingStyle},
    {"enumeration", Word::enumeration},
    {"extension", Word::extension},
    {"fault", Word::fault},
    {"fixed", Word::fixed},
    {"form", Word::form},
    {"fractionDigits", Word::facet},
    {"group", Word::group},
    {"header", Word::header},
    {"headerfault", Word::headerFault},
    {"import", Word::import},
    {"include", Word::include},
    {"input", Word::input},
    {"itemType", Word::itemType},
    {"length", Word::facet},
    {"list", Word::list},
    {"location", Word::location},
    {"maxExclusive", Word::facet},
    {"maxInclusive", Word::facet},
    {"maxLength", Word::facet},
    {"maxOccurs", Word::maxOccurs},
    {"memberTypes", Word::memberTypes},
    {"message", Word::message},
    {"mimeXml", Word::mimeXml},
    {"minExclusive", Word::facet},
    {"minInclusive", Word::facet},
    {"minLength", Word::facet},
    {"minOccurs", Word::minOccurs},
    {"mixed", Word::mixed},
    {"multipartRelated", Word::multipartRelated},
    {"name", Word::name},
    {"namespace", Word::nameSpace},
    {"nextCatalog", Word::nextCatalog},
    {"nillable", Word::nillable},
    {"operation", Word::operation},
    {"output", Word::output},
    {"parameterOrder", Word::parameterOrder},
    {"part", Word::part},
    {"parts", Word::parts},
    {"pattern", Word::facet},
    {"period", Word::facet},
    {"port", Word::port},
    {"portType", Word::portType},
    {"precision", Word::facet},
    {"processContents", Word::processContents},
    {"redefine", Word::redefine},
    {"ref", Word::ref},
    {"restriction", Word::restriction},
    {"rewritePrefix", Word::rewritePrefix},
    {"rewriteSystem", Word::rewriteSystem},
    {"rewriteURI", Word::rewriteUri},
    {"scale", Word::facet},
    {"schema", Word::schema},
    {"schemaLocation", Word::schemaLocation},
    {"sequence", Word::sequence},
    {"service", Word::service},
    {"simpleContent", Word::simpleContent},
    {"simpleType", Word::simpleType},
    {"soapAction", Word::soapAction},
    {"style", Word::style},
    {"substitutionGroup", Word::substitutionGroup},
    {"system", Word::system},
    {"systemId", Word::systemId},
    {"systemIdStartString", Word::systemIdStartString},
    {"systemIdSuffix", Word::systemIdSuffix},
    {"systemSuffix", Word::systemSuffix},
    {"targetNamespace", Word::targetNamespace},
    {"totalDigits", Word::facet},
    {"transport", Word::transport},
    {"type", Word::type},
    {"types", Word::types},
    {"union", Word::unionOf},
    {"uri", Word::uri},
    {"uriStartString", Word::uriStartString},
    {"uriSuffix", Word::uriSuffix},
    {"urlEncoded", Word::urlEncoded},
    {"urlReplacement", Word::urlReplacement},
    {"use", Word::use},
    {"value", Word::value},
    {"verb", Word::verb},
    {"whiteSpace", Word::facet},
};

}  // namespace

Space spaceOf(std::string_view uri) {
  if (uri.empty()) return Space::none;
  const auto found = spaces.find(uri);
  if (found != spaces.end()) return found->second;
  return uri.find("/addressing") != uri.npos ? Space::addressing : Space::other;
}

Word wordOf(std::string_view local) {
  const auto found = words.find(local);
  return found == words.end() ? Word::other : found->second;
}

}  // namespace ztservice::parse
