// Services, ports, bindings, operations and messages.
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tovinCore/Guard.h"
#include "tovinCore/Units.h"
#include "ztbaseclient/wsdl/CPort.h"
#include "ztbaseclient/wsdl/Declarations.h"
#include "ztbaseclient/wsdl/WsdlNamespaces.h"
#include "ztbaseclient/wsdl/WsdlParserState.h"

using tovin::guarded;
using tovin::iNode;

namespace {

constexpr wchar_t soapAddress[] = L"_WSDLSOAPNS_:address";
constexpr wchar_t soapBinding[] = L"_WSDLSOAPNS_:binding";
constexpr wchar_t soapOperation[] = L"_WSDLSOAPNS_:operation";
constexpr wchar_t soapBody[] = L"_WSDLSOAPNS_:body";

// Where the "use" of an input's body is kept for the caller.
constexpr wchar_t encodingProperty[] = L"encoding";

bool contains(const wchar_t* text, const wchar_t* part) {
  return text && std::wstring_view(text).find(part) != std::wstring_view::npos;
}

// Null fits only an empty text, and an empty text only null.
bool fits(const tovin::WideString& text, const wchar_t* wanted) {
  if (text.isEmpty() || !wanted) return text.isEmpty() && !wanted;
  return tovin::equalFolded(text.c_str(), wanted);
}

// Document style unless the attribute says "rpc"; without the attribute as given.
bool isDocumentStyle(const iNode* element, bool otherwise) {
  const auto style = element ? findAttr(element, L"style") : std::nullopt;
  return style ? !tovin::equalFolded(style->getText().view(), std::wstring_view(L"rpc")) : otherwise;
}

// An address without prefix counts as SOAP 1.1; a prefix is looked for at the definitions only.
bool isSoap11OrHttp(const iNode* definitions, const iNode* address) {
  const NameParts name(address->getName());
  if (!name.hasPrefix) return true;
  CWsdlParser::CNamespace space;
  space.setUrl(attributeText(definitions, (L"xmlns:" + std::wstring(name.prefix)).c_str()));
  return space.isWsdlSoap11SchemaNs() || contains(space.getUrl(), wsdlnamespaces::WsdlHttp);
}

tovin::NodeReferenceSet findAddresses(const NodeSearch& search, iNode* port) {
  tovin::NodeReferenceSet addresses;
  search.findNodes(port, soapAddress, addresses, NameMode::token);
  if (addresses.isEmpty()) search.findNodes(port, L"address", addresses);
  return addresses;
}

void readBodies(const NodeSearch& search, CWsdlParser::COperation& operation) {
  if (iNode* input = search.findNode(operation.node.get(), L"input")) {
    iNode* body = search.findNode(input, soapBody, NameMode::token);
    if (body) operation.input.messageNamespace = findAttrVal(body, L"namespace");
    putText(operation.node.get(), encodingProperty, body ? findAttrVal(body, L"use").c_str() : L"literal");
  }
  if (iNode* output = search.findNode(operation.node.get(), L"output")) {
    if (iNode* body = search.findNode(output, soapBody, NameMode::token))
      operation.output.messageNamespace = findAttrVal(body, L"namespace");
  }
}

CWsdlParser::COperation readOperation(const NodeSearch& search, const CWsdlParser::CPort& port, iNode* node) {
  CWsdlParser::COperation operation;
  operation.node = tovin::Ptr<iNode>(node);
  operation.portName = port.name;
  operation.portTypeName = port.binding.type;
  operation.address = port.address;
  operation.name = findAttrVal(node, L"name");
  const iNode* soap = search.findNode(node, soapOperation, NameMode::token);
  if (soap) operation.soapAction = findAttrVal(soap, L"soapAction");
  operation.documentStyle = isDocumentStyle(soap, port.binding.documentStyle);
  readBodies(search, operation);
  return operation;
}

// The operations of a binding by name, each handed out once: those of one name pair in document order. One
// whose name matches exactly goes before one that matches folded.
class UnpairedOperations {
 public:
  explicit UnpairedOperations(tovin::Array<CWsdlParser::COperation>& operations) {
    for (size_t i = operations.getSize(); i > 0; --i) {
      CWsdlParser::COperation& operation = operations[i - 1];
      exact_[std::wstring(operation.name.view())].push_back(&operation);
      folded_[folded(operation.name.view())].push_back(&operation);
    }
  }

  CWsdlParser::COperation& take(const tovin::WideString& name) {
    CWsdlParser::COperation* operation = takeFrom(exact_, std::wstring(name.view()));
    if (!operation) operation = takeFrom(folded_, folded(name.view()));
    if (!operation) throw tovin::Exception(L"Couldn't find operation");
    taken_.insert(operation);
    return *operation;
  }

 private:
  // The first of a name last.
  using ByName = std::unordered_map<std::wstring, std::vector<CWsdlParser::COperation*>>;

  CWsdlParser::COperation* takeFrom(ByName& waiting, const std::wstring& name) const {
    const auto found = waiting.find(name);
    if (found == waiting.end()) return nullptr;
    std::vector<CWsdlParser::COperation*>& operations = found->second;
    while (!operations.empty() && taken_.count(operations.back()) != 0) operations.pop_back();
    return operations.empty() ? nullptr : operations.back();
  }

  ByName exact_;
  ByName folded_;
  std::unordered_set<const CWsdlParser::COperation*> taken_;
};

void pair(CWsdlParser::COperation& operation, iNode* portTypeOperation) {
  if (operation.node) {
    const tovin::WideString encoding = attributeText(operation.node.get(), encodingProperty);
    if (!encoding.isNull()) putText(portTypeOperation, encodingProperty, encoding);
  }
  operation.node = tovin::Ptr<iNode>(portTypeOperation);
}

}  // namespace

iNode* CWsdlParser::findDefinition(const wchar_t* element, const wchar_t* name) {
  iNode* root = requireRoot();
  if (!state_->definitions) state_->definitions = std::make_unique<NamedChildren>(root);
  return state_->definitions->findNodeByAttr(element, name ? name : L"");
}

void CWsdlParser::GetDefinitionsInfo(tovin::WideString& targetNamespace) {
  guarded({ClassName, "GetDefinitionsInfo"}, [&] {
    const iNode* root = requireRoot();
    const auto target = findAttr(root, L"targetNamespace");
    if (!target) throw tovin::Exception(L"missing targetNamespace");
    targetNamespace = target->getText();
    recordSoapPrefixes(root);
  });
}

// The namespace of the SOAP 1.2 binding contains that of SOAP 1.1, so its prefixes are among them.
void CWsdlParser::recordSoapPrefixes(const iNode* definitions) {
  NodeSearch& search = state_->search;
  search.clearSoapPrefixes();
  forDeclarations(definitions, [&](std::wstring_view prefix, const tovin::WideString& uri) {
    if (contains(uri, wsdlnamespaces::WsdlSoap11)) search.addSoapPrefix(prefix);
  });
  if (!search.hasSoapPrefixes()) search.addSoapPrefix(L"soap");
}

void CWsdlParser::GetServiceInfo(tovin::WideString& serviceName, tovin::Array<CPort>& ports) {
  guarded({ClassName, "GetServiceInfo"}, [&] {
    iNode* service = state_->search.findNode(requireRoot(), L"service");
    if (!service) throw tovin::Exception(L"missing service");
    serviceName = findAttrVal(service, L"name");
    ports.clear();
    tovin::NodeReferenceSet nodes;
    state_->search.findNodes(service, L"port", nodes);
    state_->shared.start();
    std::unordered_set<std::wstring> bindings;
    for (size_t i = 0; i < nodes.getSize(); ++i) readPort(nodes[i], ports, bindings);
    if (ports.isEmpty()) {
      throw tovin::Exception("Unable to find soap addresses. This WSDL may not have soap methods.");
    }
  });
}

// The port is there before its binding is read: a binding that cannot be read leaves it without one.
void CWsdlParser::readPort(iNode* node, tovin::Array<CPort>& ports,
                           std::unordered_set<std::wstring>& bindings) {
  const tovin::NodeReferenceSet addresses = findAddresses(state_->search, node);
  if (addresses.isEmpty()) return;
  const tovin::WideString binding = findAttrVal(node, L"binding");
  const tovin::WideString name = findAttrVal(node, L"name");
  if (!bindings.insert(folded(binding.view())).second) {
    tovin::Exception::warn(L"ignoring port %ls with shared binding %ls", name, binding);
    return;
  }
  CPort& port = ports.add(CPort());
  port.node = tovin::Ptr<iNode>(node);
  port.name = name;
  port.soap11OrHttp = isSoap11OrHttp(requireRoot(), addresses[0]);
  port.address = findAttrVal(addresses[0], L"location");
  readBinding(binding, port);
}

bool CWsdlParser::IsNewBinding(const wchar_t* bindingName, const tovin::Array<CPort>& ports) {
  for (const CPort& port : ports) {
    if (tovin::equalFolded(port.binding.name.c_str(), bindingName)) return false;
  }
  return true;
}

// A question of its own, which shares nothing with the one before.
void CWsdlParser::GetBindingInfo(const wchar_t* bindingName, CPort& port) {
  state_->shared.start();
  readBinding(bindingName, port);
}

void CWsdlParser::readBinding(const wchar_t* bindingName, CPort& port) {
  guarded({ClassName, "GetBindingInfo()"}, [&] {
    iNode* node = findDefinition(L"binding", bindingName);
    if (!node) throw tovin::Exception(L"Can't find binding %ls", bindingName ? bindingName : L"");
    CBinding& binding = port.binding;
    binding.node = tovin::Ptr<iNode>(node);
    binding.name = tovin::WideString(bindingName);
    binding.type = findAttrVal(node, L"type");
    const iNode* soap = state_->search.findNode(node, soapBinding, NameMode::token);
    binding.transport = soap ? findAttrVal(soap, L"transport") : tovin::WideString(L"");
    binding.verb = soap ? findAttrVal(soap, L"verb") : tovin::WideString(L"");
    binding.documentStyle = isDocumentStyle(soap, true);
    binding.operations.clear();
    tovin::NodeReferenceSet operations;
    state_->search.findNodes(node, L"operation", operations);
    const size_t texts = port.name.getLength() + port.address.getLength() + binding.type.getLength();
    state_->shared.add(node, operations.getSize(), operations.getSize() * texts, binding.name);
    for (size_t i = 0; i < operations.getSize(); ++i) {
      binding.operations.add(readOperation(state_->search, port, operations[i]));
    }
  });
}

void CWsdlParser::GetOperationInfoFromPortType(const tovin::WideString& portTypeName,
                                               tovin::Array<COperation>& operations) {
  guarded({ClassName, "GetOperationInfoFromPortType"}, [&] {
    iNode* portType = findDefinition(L"portType", portTypeName);
    if (!portType) throw tovin::Exception(L"Couldn't find portType");
    tovin::NodeReferenceSet nodes;
    state_->search.findNodes(portType, L"operation", nodes);
    UnpairedOperations unpaired(operations);
    state_->shared.start();
    for (size_t i = 0; i < nodes.getSize(); ++i) {
      COperation& operation = unpaired.take(findAttrVal(nodes[i], L"name"));
      pair(operation, nodes[i]);
      readMessage(L"input", operation.inputName, operation.input, operation);
      readMessage(L"output", operation.outputName, operation.output, operation);
    }
  });
}

void CWsdlParser::readMessage(const wchar_t* direction, tovin::WideString& name, CMsg& message,
                              const COperation& operation) {
  const iNode* node = state_->search.findNode(operation.node.get(), direction);
  if (!node) return;
  GetMessageInfo(findAttrVal(node, L"message"), message);
  state_->shared.add(message.node.get(), message.parts.getSize(), message.name.getLength(), message.name);
  name = findAttrVal(node, L"name");
}

void CWsdlParser::GetMessageInfo(const tovin::WideString& messageName, CMsg& message) {
  guarded({ClassName, "GetMessageInfo"}, [&] {
    iNode* node = findDefinition(L"message", messageName);
    if (!node) throw tovin::Exception(L"Couldn't find message");
    message.name = findAttrVal(node, L"name");
    message.node = tovin::Ptr<iNode>(node);
    message.parts.clear();
    tovin::NodeReferenceSet parts;
    state_->search.findNodes(node, L"part", parts);
    for (size_t i = 0; i < parts.getSize(); ++i) {
      CPart& part = message.parts.add(CPart());
      part.node = tovin::Ptr<iNode>(parts[i]);
      part.name = findAttrVal(parts[i], L"name");
      part.type = findAttrVal(parts[i], L"type");
      part.element = findAttrVal(parts[i], L"element");
      part.namespaces = declarationsOn(parts[i]);
    }
  });
}

bool CWsdlParser::FindOperation(const wchar_t* portTypeName, const wchar_t* operationName,
                                const wchar_t* inputMessageName, const wchar_t* outputMessageName,
                                COperation& operation) {
  return guarded({ClassName, "FindOperation"}, [&] {
    tovin::WideString text;
    tovin::Array<CPort> ports;
    GetDefinitionsInfo(text);
    GetServiceInfo(text, ports);
    const bool anyMessages = !inputMessageName && !outputMessageName;
    for (CPort& port : ports) {
      tovin::Array<COperation> operations;  // with their messages only as long as they are looked at
      std::swap(operations, port.binding.operations);
      GetOperationInfoFromPortType(port.binding.type, operations);
      if (!fits(port.binding.type, portTypeName)) continue;
      for (const COperation& candidate : operations) {
        if (!fits(candidate.name, operationName)) continue;
        if (!anyMessages &&
            !(fits(candidate.input.name, inputMessageName) && fits(candidate.output.name, outputMessageName)))
          continue;
        operation = candidate;
        return true;
      }
    }
    return false;
  });
}

bool CWsdlParser::OpHasOverloads(const COperation& operation) {
  return guarded({ClassName, "OpHasOverloads()"}, [&] {
    iNode* parent = operation.node ? operation.node->findParent() : nullptr;
    if (!parent) throw tovin::Exception(L"Cannot dereference a NULL pointer");
    tovin::NodeReferenceSet operations;
    state_->search.findNodes(parent, L"operation", operations);
    size_t count = 0;
    for (size_t i = 0; i < operations.getSize(); ++i) {
      const auto name = findAttr(operations[i], L"name");
      if (name && name->getText().view() == operation.name.view()) ++count;
    }
    return count > 1;
  });
}
