#include "ztclient/answers/WsdlJson.h"

#include <map>
#include <ostream>
#include <sstream>
#include <tuple>
#include <utility>
#include <vector>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/wsdl/CCustomType.h"
#include "ztbaseclient/wsdl/CPort.h"
#include "ztclient/answers/ByteText.h"
#include "ztclient/terminal/WarningScope.h"

namespace {

const char* kindName(CWsdlParser::CustomTypeKind kind) {
  constexpr const char* names[] = {"array", "complex", "enumeration", "simple"};
  return kind == CWsdlParser::KindUnresolved ? "" : names[kind];
}

Json portToJson(const CWsdlParser::CPort& port) {
  const CWsdlParser::CBinding& binding = port.binding;
  return {{"name", bytesOf(port.name)},
          {"address", bytesOf(port.address)},
          {"soap11OrHttp", port.soap11OrHttp},
          {"binding",
           {{"name", bytesOf(binding.name)},
            {"type", bytesOf(binding.type)},
            {"transport", bytesOf(binding.transport)},
            {"verb", bytesOf(binding.verb)},
            {"documentStyle", binding.documentStyle}}}};
}

Json operationToJson(const CWsdlParser::COperation& operation) {
  return {{"name", bytesOf(operation.name)},
          {"soapAction", bytesOf(operation.soapAction)},
          {"documentStyle", operation.documentStyle},
          {"inputName", bytesOf(operation.inputName)},
          {"outputName", bytesOf(operation.outputName)}};
}

Json messageToJson(const CWsdlParser::CMsg& message) {
  return {{"name", bytesOf(message.name)}, {"namespace", bytesOf(message.messageNamespace)}};
}

Json partToJson(const CWsdlParser::CPart& part) {
  return {{"name", bytesOf(part.name)}, {"type", bytesOf(part.type)}, {"element", bytesOf(part.element)}};
}

// The types of parts as texts of a visitor. Those of the last types are kept: many parts have few types.
class ResolvedTexts {
 public:
  ResolvedTexts(CWsdlParser& parser, const WsdlVisitor& visitor, const TypeFailure& failure)
      : parser_(parser), visitor_(visitor), failure_(failure) {}

  const std::string& of(const CWsdlParser::CPart& part) {
    try {
      CWsdlParser::CNamespace space;
      const tovin::iNode* definition = parser_.FindTypeDefinition(part, space);
      if (!definition) return last_ = visitor_.resolvedText(resolved(part));
      const tovin::WideString url(space.getUrl());  // null for no namespace
      const Key key(definition, !part.element.isEmpty(), bytesOf(space.getProtocol()) + bytesOf(url.view()));
      const auto kept = texts_.find(key);
      return kept != texts_.end() ? kept->second : keep(key, visitor_.resolvedText(resolved(part)));
    } catch (const tovin::Exception& e) {
      return last_ = visitor_.resolvedText(errorToJson(e));
    }
  }

 private:
  // What defines a type, whether it is asked with the document query, and the namespace it is asked for in.
  using Key = std::tuple<const tovin::iNode*, bool, std::string>;

  const std::string& keep(const Key& key, std::string text) {
    constexpr size_t mostKept = size_t{64} << 20;
    kept_ += text.size();
    if (kept_ > mostKept) {
      texts_.clear();
      kept_ = text.size();
    }
    return texts_[key] = std::move(text);
  }

  Json errorToJson(const tovin::Exception& e) const {
    if (failure_) failure_(e);
    return {{"error", bytesOf(e.getMessage())}};
  }

  Json resolved(const CWsdlParser::CPart& part) {
    try {
      CWsdlParser::CCustomType type;
      const bool custom = part.element.isEmpty() ? parser_.GetCustomTypeInfoRPC(part, type)
                                                 : parser_.GetCustomTypeInfoDoc(part, type);
      return custom ? typeToJson(type, kindName(type.kind), parser_.FindTargetNamespace(type))
                    : typeToJson(type, "atomic", atomicNamespace(part));
    } catch (const tovin::Exception& e) {
      return errorToJson(e);
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
  const WsdlVisitor& visitor_;
  const TypeFailure& failure_;
  std::map<Key, std::string> texts_;
  size_t kept_ = 0;
  std::string last_;
};

// JSON in pieces, indented by one blank a level.
class JsonStream {
 public:
  explicit JsonStream(std::ostream& out) : out_(out) {}

  /// \param key null in an array and at the top.
  void open(const char* key, char bracket) {
    begin(key);
    out_ << bracket;
    scopes_.push_back({bracket == '{' ? '}' : ']', true});
  }
  void put(const char* key, const std::string& text) {
    begin(key);
    out_ << text;
  }
  void put(const Json& members) {
    for (const auto& [key, value] : members.items()) put(key.c_str(), indented(value, scopes_.size()));
  }
  /// Until so many are open.
  void closeTo(size_t depth) {
    while (scopes_.size() > depth) {
      const Scope scope = scopes_.back();
      scopes_.pop_back();
      if (!scope.empty) breakLine();
      out_ << scope.closing;
    }
  }

  static std::string indented(const Json& value, size_t depth) {
    std::string text;
    for (const char c : toText(value, 1)) {
      text += c;
      if (c == '\n') text.append(depth, ' ');
    }
    return text;
  }

 private:
  struct Scope {
    char closing;
    bool empty;
  };

  void begin(const char* key) {
    if (!scopes_.empty()) {
      if (!std::exchange(scopes_.back().empty, false)) out_ << ',';
      breakLine();
    }
    if (key) out_ << '"' << key << "\": ";
  }
  void breakLine() { out_ << '\n' << std::string(scopes_.size(), ' '); }

  std::ostream& out_;
  std::vector<Scope> scopes_;
};

class JsonVisitor : public WsdlVisitor {
 public:
  explicit JsonVisitor(std::ostream& out) : json_(out) {}

  void onDocument(const Json& document) override {
    json_.open(nullptr, '{');
    json_.put(document);
    json_.open("ports", '[');
  }
  void onPort(const Json& port) override {
    json_.closeTo(ports);
    json_.open(nullptr, '{');
    for (const auto& [key, value] : port.items()) {
      if (!value.is_object()) json_.put({{key, value}});
    }
    json_.open("binding", '{');
    json_.put(port["binding"]);
    json_.open("operations", '[');
  }
  void onOperation(const Json& operation) override {
    json_.closeTo(operations);
    json_.open(nullptr, '{');
    json_.put(operation);
  }
  void onMessage(const char* direction, const Json& message) override {
    json_.closeTo(messages);
    json_.open(direction, '{');
    json_.put(message);
    json_.open("parts", '[');
  }
  void onPart(const Json& part, const std::string* resolved) override {
    json_.closeTo(parts);
    json_.open(nullptr, '{');
    json_.put(part);
    if (resolved) json_.put("resolved", *resolved);
  }
  void onEnd(const Json& warnings) override {
    json_.closeTo(1);
    json_.put({{"warnings", warnings}});
    json_.closeTo(0);
  }
  std::string resolvedText(const Json& resolved) const override {
    return JsonStream::indented(resolved, parts + 1);
  }

 private:
  // How many brackets are open in each list.
  static constexpr size_t ports = 2;
  static constexpr size_t operations = 5;
  static constexpr size_t messages = 6;
  static constexpr size_t parts = 8;

  JsonStream json_;
};

void visitMessage(const char* direction, const CWsdlParser::CMsg& message, ResolvedTexts* resolved,
                  WsdlVisitor& visitor) {
  visitor.onMessage(direction, messageToJson(message));
  for (const CWsdlParser::CPart& part : message.parts) {
    visitor.onPart(partToJson(part), resolved ? &resolved->of(part) : nullptr);
  }
}

// A port's operations with their messages, which only one port at a time has.
tovin::Array<CWsdlParser::COperation> completeOperations(CWsdlParser& parser,
                                                         const CWsdlParser::CPort& port) {
  tovin::Array<CWsdlParser::COperation> operations = port.binding.operations;
  parser.GetOperationInfoFromPortType(port.binding.type, operations);
  return operations;
}

}  // namespace

void visitWsdl(CWsdlParser& parser, bool types, WsdlVisitor& visitor, const TypeFailure& failure) {
  Json warnings = Json::array();
  const WarningScope scope([&](const wchar_t* message) { warnings.push_back(bytesOf(message)); });
  tovin::WideString targetNamespace;
  tovin::WideString service;
  tovin::Array<CWsdlParser::CPort> ports;
  parser.GetDefinitionsInfo(targetNamespace);
  parser.GetServiceInfo(service, ports);
  for (const CWsdlParser::CPort& port : ports) completeOperations(parser, port);
  visitor.onDocument({{"targetNamespace", bytesOf(targetNamespace)}, {"service", bytesOf(service)}});
  ResolvedTexts texts(parser, visitor, failure);
  ResolvedTexts* resolved = types ? &texts : nullptr;
  for (const CWsdlParser::CPort& port : ports) {
    visitor.onPort(portToJson(port));
    for (const CWsdlParser::COperation& operation : completeOperations(parser, port)) {
      visitor.onOperation(operationToJson(operation));
      visitMessage("input", operation.input, resolved, visitor);
      visitMessage("output", operation.output, resolved, visitor);
    }
  }
  visitor.onEnd(warnings);
}

void writeWsdlJson(CWsdlParser& parser, bool types, std::ostream& out, const TypeFailure& failure) {
  JsonVisitor visitor(out);
  visitWsdl(parser, types, visitor, failure);
}

Json wsdlToJson(CWsdlParser& parser, bool types) {
  std::ostringstream text;
  writeWsdlJson(parser, types, text);
  return Json::parse(text.str());
}
