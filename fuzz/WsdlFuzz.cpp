// A WSDL document from bytes, asked everything: each answer is a value or a framework exception.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "tovinCore/Exception.h"
#include "ztbaseclient/wsdl/CCustomType.h"
#include "ztbaseclient/wsdl/CPort.h"

namespace {

template <class Body>
void ask(Body&& body) {
  try {
    body();
  } catch (const tovin::Exception&) {
  }
}

void askMember(CWsdlParser& parser, const CWsdlParser::CElement& member) {
  CWsdlParser::CCustomType type;
  ask([&] { parser.FindTypeNamespace(member); });
  ask([&] { parser.IsOfAtomicType(member, CWsdlParser::RPC); });
  ask([&] { parser.GetElementsCustomType(member, type); });
}

void askPart(CWsdlParser& parser, const CWsdlParser::CPart& part) {
  CWsdlParser::CCustomType type;
  ask([&] { parser.IsOfAtomicType(part); });
  ask([&] { parser.GetSchemaForPartDoc(part); });
  ask([&] { parser.GetCustomTypeInfoRPC(part, type); });
  ask([&] {
    parser.GetCustomTypeInfoDoc(part, type);
    parser.FindTargetNamespace(type.node.get());
    for (size_t i = 0; i < type.elements.getSize() && i < 20; ++i) askMember(parser, type.elements[i]);
  });
}

void askPort(CWsdlParser& parser, CWsdlParser::CPort& port) {
  tovin::Array<CWsdlParser::COperation>& operations = port.binding.operations;
  ask([&] { parser.GetOperationInfoFromPortType(port.binding.type, operations); });
  for (const CWsdlParser::COperation& operation : operations) {
    ask([&] { parser.OpHasOverloads(operation); });
    for (const CWsdlParser::CPart& part : operation.input.parts) askPart(parser, part);
    for (const CWsdlParser::CPart& part : operation.output.parts) askPart(parser, part);
  }
}

void askAll(CWsdlParser& parser) {
  tovin::WideString text;
  tovin::Array<CWsdlParser::CPort> ports;
  CWsdlParser::COperation operation;
  ask([&] { parser.GetDefinitionsInfo(text); });
  ask([&] { parser.GetServiceInfo(text, ports); });
  for (CWsdlParser::CPort& port : ports) askPort(parser, port);
  ask([&] { parser.FindOperation(L"t:P", L"o", nullptr, nullptr, operation); });
  ask([&] {
    for (const CWsdlParser::CSchema& schema : parser.GetSchemaInfo()) {
      CWsdlParser::CCustomType type;
      parser.importExternalSchemaElements(schema);
      ask([&] { parser.GetCustomTypeOutOfSchema(schema, L"T", type); });
    }
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tovin::Exception::setWarningHandler([](const wchar_t*) {});
  const tovin::Array<unsigned char> bytes(std::vector<unsigned char>(data, data + size));
  CWsdlParser parser;
  ask([&] { parser.Parse(bytes); });
  askAll(parser);
  parser.SetBackwardCompatible70(true);
  parser.Reset();
  ask([&] { parser.ParseZippedWsdl(bytes); });
  askAll(parser);
  return 0;
}
