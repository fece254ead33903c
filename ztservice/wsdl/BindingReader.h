#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ztservice/schema/Resolver.h"
#include "ztservice/wsdl/DefinitionSet.h"
#include "ztservice/wsdl/Port.h"

namespace ztservice {

// Brings bindings, port types and messages together: what a port offers.
class BindingReader {
 public:
  BindingReader(const wsdl::DefinitionSet& definitions, schema::Resolver& resolver)
      : definitions_(definitions), resolver_(resolver) {}

  // What the binding that a port names offers; the same for all ports that name it.
  std::shared_ptr<const Port::Bound> bound(const parse::Node& port, const parse::Definitions& in);

 private:
  using Definition = wsdl::Definition;

  // An input or output of the binding with that of the port type.
  struct Side {
    const parse::Node* abstract = nullptr;
    const parse::Node* concrete = nullptr;
    std::string_view name;
  };
  // Where the extension elements of an input or output are, those in parts of a multipart too, in order.
  struct Extensions {
    std::vector<const parse::Node*> headers;
    std::vector<const parse::Node*> contents;
    const parse::Node* body = nullptr;
  };
  using Taken = std::unordered_set<const parse::Node*>;
  using Operations = std::unordered_map<std::string_view, std::vector<const parse::Node*>>;

  Port::Bound read(const Definition& binding);
  static void readProtocol(Port::Bound& bound, const parse::Node& binding, std::string_view& style);
  Operation operation(const parse::Node& node, const Port::Bound& bound, std::string_view style);
  static const parse::Node* choose(const parse::Node& node, const Operations& operations, Taken& taken);
  void fill(Operation& operation, const parse::Node& abstract, const parse::Node& concrete,
            const Definition& portType, const Definition& binding, Protocol protocol);
  Message message(const Side& side, const Definition& portType, const Definition& binding, Protocol protocol);
  void fillBody(Message& message, const Side& side, const Definition* of, const Definition& binding,
                Protocol protocol);
  Fault fault(const parse::Node& abstract, const parse::Node& concrete, const Definition& portType);
  Header header(const parse::Node& node, const Definition& binding, const Definition* of,
                std::unordered_set<std::string_view>& carried);
  static Extensions extensionsOf(const parse::Node* concrete);
  static std::string_view contentOf(const parse::Node* concrete);

  const std::vector<Part>& partsOf(const Definition& message);
  Part part(const parse::Node& node, const parse::Definitions& in);
  void typeByElement(Part& part, const parse::Node& node, const parse::Definitions& in);
  void typeByName(Part& part, const parse::Node& node, const parse::Definitions& in);
  std::string_view keep(const std::string& text) { return resolver_.keep(text); }

  const wsdl::DefinitionSet& definitions_;
  schema::Resolver& resolver_;
  std::unordered_map<const parse::Node*, std::shared_ptr<const Port::Bound>> bound_;
  std::unordered_map<const parse::Node*, std::vector<Part>> parts_;
};

}  // namespace ztservice
