#include "ztclient/WsdlJson.h"

#include "tovinCore/Exception.h"
#include "ztbaseclient/wsdl/CCustomType.h"
#include "ztbaseclient/wsdl/CPort.h"
#include "ztclient/Document.h"

namespace {

// Collects warnings as long as it lives.
class Warnings {
 public:
  Warnings()
      : before_(tovin::Exception::setWarningHandler(
            [this](const wchar_t* message) { texts_.push_back(bytesOf(message)); })) {}
  Warnings(const Warnings&) = delete;
  Warnings& operator=(const Warnings&) = delete;
  ~Warnings() { tovin::Exception::setWarningHandler(before_); }

  const Json& texts() const { return texts_; }

 private:
  Json texts_ = Json::array();
  tovin::Exception::WarningHandler before_;
};

const char* kindName(CWsdlParser::CustomTypeKind kind) {
  constexpr const char* names[] = {"array", "complex", "enumeration", "simple"};
  return kind == CWsdlParser::KindUnresolved ? "" : names[kind];
}

class Writer {
 public:
  Writer(CWsdlParser& parser, bool types) : parser_(parser), types_(types) {}

  Json portToJson(const CWsdlParser::CPort& port) {
    return {{"name", bytesOf(port.name)},
            {"address", bytesOf(port.address)},
            {"soap11OrHttp", port.soap11OrHttp},
            {"binding", bindingToJson(port.binding)}};
  }

 private:
  Json bindingToJson(const CWsdlParser::CBinding& binding) {
    Json operations = Json::array();
    for (const CWsdlParser::COperation& operation : binding.operations) {
      operations.push_back(operationToJson(operation));
    }
    return {{"name", bytesOf(binding.name)},           {"type", bytesOf(binding.type)},
            {"transport", bytesOf(binding.transport)}, {"verb", bytesOf(binding.verb)},
            {"documentStyle", binding.documentStyle},  {"operations", std::move(operations)}};
  }

  Json operationToJson(const CWsdlParser::COperation& operation) {
    Json json = {{"name", bytesOf(operation.name)},
                 {"soapAction", bytesOf(operation.soapAction)},
                 {"documentStyle", operation.documentStyle},
                 {"inputName", bytesOf(operation.inputName)},
                 {"outputName", bytesOf(operation.outputName)}};
    json["input"] = messageToJson(operation.input);
    json["output"] = messageToJson(operation.output);
    return json;
  }

  Json messageToJson(const CWsdlParser::CMsg& message) {
    Json parts = Json::array();
    for (const CWsdlParser::CPart& part : message.parts) parts.push_back(partToJson(part));
    return {{"name", bytesOf(message.name)},
            {"namespace", bytesOf(message.messageNamespace)},
            {"parts", std::move(parts)}};
  }

  Json partToJson(const CWsdlParser::CPart& part) {
    Json json = {
        {"name", bytesOf(part.name)}, {"type", bytesOf(part.type)}, {"element", bytesOf(part.element)}};
    if (types_) json["resolved"] = resolvedToJson(part);
    return json;
  }

  Json resolvedToJson(const CWsdlParser::CPart& part) {
    try {
      CWsdlParser::CCustomType type;
      const bool custom = part.element.isEmpty() ? parser_.GetCustomTypeInfoRPC(part, type)
                                                 : parser_.GetCustomTypeInfoDoc(part, type);
      return custom ? typeToJson(type, kindName(type.kind), parser_.FindTargetNamespace(type))
                    : typeToJson(type, "atomic", atomicNamespace(part));
    } catch (const tovin::Exception& e) {
      return {{"error", bytesOf(e.getMessage())}};
    }
  }

  // As the document writes it, where the type's own namespace knows two schemes only.
  tovin::WideString atomicNamespace(const CWsdlParser::CPart& part) {
    if (!part.element.isEmpty()) return parser_.FindTypeNamespace(parser_.GetSchemaElement_Doc(part));
    CWsdlParser::CElement element;
    element.node = part.node;
    element.type = part.type;
    return parser_.FindTypeNamespace(element);
  }

  Json typeToJson(const CWsdlParser::CCustomType& type, const char* kind, const wchar_t* space) {
    Json elements = Json::array();
    for (const CWsdlParser::CElement& element : type.elements) {
      elements.push_back({{"name", bytesOf(element.name)},
                          {"type", bytesOf(element.type)},
                          {"typeNamespace", bytesOf(parser_.FindTypeNamespace(element))},
                          {"required", element.required}});
    }
    return {{"kind", kind},
            {"name", bytesOf(type.name)},
            {"namespace", bytesOf(space)},
            {"itemName", bytesOf(type.itemName)},
            {"superClass", bytesOf(type.superClass)},
            {"elements", std::move(elements)}};
  }

  CWsdlParser& parser_;
  bool types_;
};

}  // namespace

Json wsdlToJson(CWsdlParser& parser, bool types) {
  const Warnings warnings;
  tovin::WideString targetNamespace;
  tovin::WideString service;
  tovin::Array<CWsdlParser::CPort> ports;
  parser.GetDefinitionsInfo(targetNamespace);
  parser.GetServiceInfo(service, ports);
  for (CWsdlParser::CPort& port : ports) {
    parser.GetOperationInfoFromPortType(port.binding.type, port.binding.operations);
  }
  Json json = {{"targetNamespace", bytesOf(targetNamespace)}, {"service", bytesOf(service)}};
  json["ports"] = Json::array();
  for (const CWsdlParser::CPort& port : ports)
    json["ports"].push_back(Writer(parser, types).portToJson(port));
  json["warnings"] = warnings.texts();
  return json;
}
