// What a service offers: its ports and operations, and the types that they take and give.
//
//     example_service jobs.wsdl
#include <iostream>

#include "tovinCore/Utf8.h"
#include "ztbaseclient/ztbaseclient.h"

namespace {

// The texts of a document are its UTF-8, one byte in each wide character.
std::string utf8(const tovin::WideString& text) {
  std::string bytes;
  for (wchar_t c : text.view()) bytes += static_cast<char>(c);
  return bytes;
}

void printPart(CWsdlParser& parser, const CWsdlParser::CPart& part) {
  CWsdlParser::CCustomType type;
  const bool custom = part.element.isEmpty() ? parser.GetCustomTypeInfoRPC(part, type)
                                             : parser.GetCustomTypeInfoDoc(part, type);
  std::cout << "      " << utf8(part.name) << ": " << utf8(type.name) << (custom ? "" : " (atomic)") << '\n';
  for (const CWsdlParser::CElement& element : type.elements) {
    std::cout << "        " << utf8(element.name) << ": " << utf8(element.type)
              << (element.required ? "" : " (optional)") << '\n';
  }
}

void print(CWsdlParser& parser, CWsdlParser::CPort& port) {
  std::cout << "port " << utf8(port.name) << " at " << utf8(port.address) << '\n';
  parser.GetOperationInfoFromPortType(port.binding.type, port.binding.operations);
  for (const CWsdlParser::COperation& operation : port.binding.operations) {
    std::cout << "  " << utf8(operation.name) << "\n    takes\n";
    for (const CWsdlParser::CPart& part : operation.input.parts) printPart(parser, part);
    std::cout << "    gives\n";
    for (const CWsdlParser::CPart& part : operation.output.parts) printPart(parser, part);
  }
}

void run(const char* file) {
  CWsdlParser parser;
  parser.Parse(tovin::WideString(tovin::utf8ToWide(file)));
  tovin::WideString targetNamespace, service;
  tovin::Array<CWsdlParser::CPort> ports;
  parser.GetDefinitionsInfo(targetNamespace);  // always the first question
  parser.GetServiceInfo(service, ports);
  std::cout << utf8(service) << " of " << utf8(targetNamespace) << '\n';
  for (CWsdlParser::CPort& port : ports) print(parser, port);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: example_service FILE\n";
    return 2;
  }
  try {
    run(argv[1]);
    return 0;
  } catch (const tovin::Exception& e) {
    std::cerr << e.what() << '\n';
    return 1;
  }
}
