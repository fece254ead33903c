#include "ztservice/wsdl/BindingReader.h"

#include <algorithm>

namespace ztservice {

using parse::Node;
using parse::Space;
using parse::Word;
using wsdl::Kind;

namespace {

bool isSoap(const Node& node, Word word) {
  return node.word == word && (node.space == Space::soap11 || node.space == Space::soap12);
}

bool isSoap(Protocol protocol) { return protocol == Protocol::soap11 || protocol == Protocol::soap12; }

const Node* soapChild(const Node* parent, Word word) {
  const Node* at = parent ? parent->first : nullptr;
  while (at && !isSoap(*at, word)) at = at->next;
  return at;
}

// What is neither counts as not written.
std::string_view styleOf(const Node* node) {
  const std::string_view style = node ? node->get(Word::style) : std::string_view();
  return style == "document" || style == "rpc" ? style : std::string_view();
}

std::string_view useOf(const Node* node) {
  if (!node) return {};
  const std::string_view use = node->get(Word::use);
  return use.empty() ? "literal" : use;
}

const Node* named(const Node& parent, Word word, std::string_view name) {
  for (const Node& child : parse::Children(parent, Space::wsdl, word)) {
    if (child.get(Word::name) == name) return &child;
  }
  return nullptr;
}

const Node* inputOf(const Node& operation) { return operation.child(Space::wsdl, Word::input); }
const Node* outputOf(const Node& operation) { return operation.child(Space::wsdl, Word::output); }

bool outputComesFirst(const Node& operation) {
  const Node* at = operation.first;
  while (at && !at->isWsdl(Word::input) && !at->isWsdl(Word::output)) at = at->next;
  return at && at->isWsdl(Word::output);
}

// The name that WSDL 1.1 gives an input or output that has none (2.4.5).
std::string nameOf(const Node& operation, const Node& side) {
  if (side.has(Word::name)) return std::string(side.get(Word::name));
  const std::string name(operation.get(Word::name));
  const bool isInput = side.word == Word::input;
  if (!inputOf(operation) || !outputOf(operation)) return name;
  if (!isInput) return outputComesFirst(operation) ? name + "Solicit" : name + "Response";
  return outputComesFirst(operation) ? name + "Response" : name + "Request";
}

}  // namespace

std::shared_ptr<const Port::Bound> BindingReader::bound(const Node& port, const parse::Definitions& in) {
  const std::string_view name = port.get(Word::binding);
  const Definition* binding = definitions_.find(Kind::binding, port, name, in);
  if (!binding) {
    auto none = std::make_shared<Port::Bound>();
    none->error = keep("no binding " + std::string(name));
    return none;
  }
  auto& known = bound_[binding->node];
  if (!known) known = std::make_shared<const Port::Bound>(read(*binding));
  return known;
}

void BindingReader::readProtocol(Port::Bound& bound, const Node& binding, std::string_view& style) {
  for (const Node* child = binding.first; child; child = child->next) {
    if (child->word != Word::binding) continue;
    if (child->space == Space::http) {
      bound.protocol = Protocol::http;
      bound.verb = child->get(Word::verb);
      return;
    }
    if (!isSoap(*child, Word::binding)) continue;
    bound.protocol = child->space == Space::soap11 ? Protocol::soap11 : Protocol::soap12;
    bound.transport = child->get(Word::transport);
    style = styleOf(child);
    return;
  }
}

Port::Bound BindingReader::read(const Definition& binding) {
  Port::Bound bound;
  bound.name = binding.name;
  std::string_view style;
  readProtocol(bound, *binding.node, style);
  const std::string_view name = binding.node->get(Word::type);
  const Definition* portType = definitions_.find(Kind::portType, *binding.node, name, *binding.in);
  if (!portType) {
    bound.error = keep("no portType " + std::string(name));
    return bound;
  }
  bound.portType = portType->name;
  Operations operations;
  for (const Node& one : parse::Children(*portType->node, Space::wsdl, Word::operation))
    operations[one.get(Word::name)].push_back(&one);
  Taken taken;
  for (const Node& concrete : parse::Children(*binding.node, Space::wsdl, Word::operation)) {
    Operation& added = bound.operations.emplace_back(operation(concrete, bound, style));
    const Node* abstract = choose(concrete, operations, taken);
    if (abstract) {
      fill(added, *abstract, concrete, *portType, binding, bound.protocol);
    } else {
      added.error_ = "no such operation in the port type";
    }
  }
  return bound;
}

Operation BindingReader::operation(const Node& node, const Port::Bound& bound, std::string_view style) {
  Operation out;
  out.name_ = node.get(Word::name);
  if (isSoap(bound.protocol)) {
    const Node* soap = soapChild(&node, Word::operation);
    const std::string_view own = styleOf(soap);
    out.style_ = !own.empty() ? own : !style.empty() ? style : "document";
    if (soap) out.soapAction_ = soap->get(Word::soapAction);
  } else if (const Node* http = node.child(Space::http, Word::operation)) {
    out.location_ = http->get(Word::location);
  }
  return out;
}

// Of several operations with one name, the one whose input and output have the names that the binding gives,
// and of these the first that no operation before took.
const Node* BindingReader::choose(const Node& node, const Operations& operations, Taken& taken) {
  const auto found = operations.find(node.get(Word::name));
  if (found == operations.end()) return nullptr;
  std::vector<const Node*> left = found->second;
  for (const Word side : {Word::input, Word::output}) {
    const Node* given = node.child(Space::wsdl, side);
    if (!given || !given->has(Word::name) || left.size() == 1) continue;
    std::vector<const Node*> fitting;
    for (const Node* one : left) {
      const Node* its = one->child(Space::wsdl, side);
      if (its && nameOf(*one, *its) == given->get(Word::name)) fitting.push_back(one);
    }
    if (!fitting.empty()) left = std::move(fitting);
  }
  const auto free =
      std::find_if(left.begin(), left.end(), [&](const Node* one) { return !taken.contains(one); });
  const Node* chosen = free == left.end() ? left.front() : *free;
  taken.insert(chosen);
  return chosen;
}

void BindingReader::fill(Operation& operation, const Node& abstract, const Node& concrete,
                         const Definition& portType, const Definition& binding, Protocol protocol) {
  std::string_view order = abstract.get(Word::parameterOrder);
  for (std::string_view word = parse::takeWord(order); !word.empty(); word = parse::takeWord(order))
    operation.parameterOrder_.push_back(word);
  if (const Node* input = inputOf(abstract)) {
    operation.input_ =
        message({input, inputOf(concrete), keep(nameOf(abstract, *input))}, portType, binding, protocol);
  }
  if (const Node* output = outputOf(abstract)) {
    operation.output_ =
        message({output, outputOf(concrete), keep(nameOf(abstract, *output))}, portType, binding, protocol);
  }
  for (const Node& one : parse::Children(abstract, Space::wsdl, Word::fault))
    operation.faults_.push_back(fault(one, concrete, portType));
}

Message BindingReader::message(const Side& side, const Definition& portType, const Definition& binding,
                               Protocol protocol) {
  Message out;
  out.name = side.name;
  out.action = side.abstract->get(Word::action, Space::addressing);
  const std::string_view name = side.abstract->get(Word::message);
  const Definition* of = definitions_.find(Kind::message, *side.abstract, name, *portType.in);
  if (of) {
    out.message = of->name;
  } else {
    out.error = keep("no message " + std::string(name));
  }
  fillBody(out, side, of, binding, protocol);
  return out;
}

BindingReader::Extensions BindingReader::extensionsOf(const Node* concrete) {
  Extensions out;
  const auto take = [&](const Node& at) {
    if (isSoap(at, Word::header)) out.headers.push_back(&at);
    if (isSoap(at, Word::body) && !out.body) out.body = &at;
    if (at.is(Space::mime, Word::content)) out.contents.push_back(&at);
  };
  for (const Node* child = concrete ? concrete->first : nullptr; child; child = child->next) {
    take(*child);
    if (!child->is(Space::mime, Word::multipartRelated)) continue;
    for (const Node& part : parse::Children(*child, Space::mime, Word::part)) {
      for (const Node* inside = part.first; inside; inside = inside->next) take(*inside);
    }
  }
  return out;
}

std::string_view BindingReader::contentOf(const Node* concrete) {
  for (const Node* child = concrete ? concrete->first : nullptr; child; child = child->next) {
    if (child->is(Space::http, Word::urlEncoded)) return "urlEncoded";
    if (child->is(Space::http, Word::urlReplacement)) return "urlReplacement";
    if (child->is(Space::mime, Word::content)) return child->get(Word::type);
    if (child->is(Space::mime, Word::mimeXml)) return "text/xml";
  }
  return {};
}

void BindingReader::fillBody(Message& message, const Side& side, const Definition* of,
                             const Definition& binding, Protocol protocol) {
  const Extensions extensions = extensionsOf(side.concrete);
  message.use = useOf(extensions.body);
  if (extensions.body) {
    message.encodingStyle = extensions.body->get(Word::encodingStyle);
    message.space = extensions.body->get(Word::nameSpace);
  }
  if (!isSoap(protocol)) message.content = contentOf(side.concrete);
  std::unordered_set<std::string_view> carried;
  for (const Node* one : extensions.headers) message.headers.push_back(header(*one, binding, of, carried));
  if (!of) return;
  const std::vector<Part>& parts = partsOf(*of);
  if (isSoap(protocol)) {
    for (const Node* content : extensions.contents) {
      const std::string_view name = content->get(Word::part);
      const auto part =
          std::find_if(parts.begin(), parts.end(), [&](const Part& one) { return one.name == name; });
      if (part == parts.end()) continue;
      carried.insert(name);
      auto& attachments = message.attachments;
      auto known = std::find_if(attachments.begin(), attachments.end(),
                                [&](const Attachment& one) { return one.part.name == name; });
      if (known == attachments.end()) known = attachments.insert(known, {*part, {}});
      const std::string_view type = content->get(Word::type);
      if (!type.empty()) known->mediaTypes.push_back(type);
    }
  }
  if (extensions.body && extensions.body->has(Word::parts)) {
    std::string_view names = extensions.body->get(Word::parts);
    std::unordered_set<std::string_view> wanted;
    for (std::string_view name = parse::takeWord(names); !name.empty(); name = parse::takeWord(names))
      wanted.insert(name);
    for (const Part& part : parts) {
      if (wanted.contains(part.name)) message.parts.push_back(part);
    }
    return;
  }
  for (const Part& part : parts) {
    if (!carried.contains(part.name)) message.parts.push_back(part);
  }
}

Header BindingReader::header(const Node& node, const Definition& binding, const Definition* of,
                             std::unordered_set<std::string_view>& carried) {
  Header out;
  out.use = useOf(&node);
  out.space = node.get(Word::nameSpace);
  const std::string_view name = node.get(Word::message);
  const Definition* message = definitions_.find(Kind::message, node, name, *binding.in);
  if (!message) {
    out.error = keep("no message " + std::string(name));
    return out;
  }
  out.message = message->name;
  const std::string_view partName = node.get(Word::part);
  const std::vector<Part>& parts = partsOf(*message);
  const auto part =
      std::find_if(parts.begin(), parts.end(), [&](const Part& one) { return one.name == partName; });
  if (part == parts.end()) {
    out.error =
        keep("no part " + std::string(partName) + " in the message " + std::string(message->name.local));
    return out;
  }
  out.part = *part;
  if (of && of->node == message->node) carried.insert(partName);
  return out;
}

Fault BindingReader::fault(const Node& abstract, const Node& concrete, const Definition& portType) {
  Fault out;
  out.name = abstract.get(Word::name);
  const Node* bound = named(concrete, Word::fault, out.name);
  out.use = useOf(soapChild(bound, Word::fault));
  const std::string_view name = abstract.get(Word::message);
  const Definition* message = definitions_.find(Kind::message, abstract, name, *portType.in);
  if (message) {
    out.message = message->name;
    out.parts = partsOf(*message);
  } else {
    out.error = keep("no message " + std::string(name));
  }
  return out;
}

const std::vector<Part>& BindingReader::partsOf(const Definition& message) {
  const auto [known, isNew] = parts_.try_emplace(message.node);
  if (isNew) {
    for (const Node& one : parse::Children(*message.node, Space::wsdl, Word::part))
      known->second.push_back(part(one, *message.in));
  }
  return known->second;
}

Part BindingReader::part(const Node& node, const parse::Definitions& in) {
  Part out;
  out.name = node.get(Word::name);
  try {
    if (node.has(Word::element)) {
      typeByElement(out, node, in);
    } else if (node.has(Word::type)) {
      typeByName(out, node, in);
    } else {
      throw schema::Unresolved{"the part has neither element nor type"};
    }
  } catch (const schema::Unresolved& e) {
    out.error = keep(e.reason);
  }
  return out;
}

namespace {

// A name without namespace is looked for in none, then in that of the definitions.
template <class Find>
auto findForPart(const schema::Asked& asked, const parse::Definitions& in, const Find& find) {
  auto* found = asked.declared ? find(asked.name) : nullptr;
  if (!found && asked.declared && asked.name.space.empty())
    found = find({in.targetNamespace, asked.name.local});
  return found;
}

}  // namespace

void BindingReader::typeByElement(Part& part, const Node& node, const parse::Definitions& in) {
  const schema::Asked asked = schema::askedName(node, node.get(Word::element));
  schema::ElementEntry* found =
      findForPart(asked, in, [&](const Name& name) { return resolver_.findElement(name); });
  if (!found) throw schema::Unresolved{schema::notFound("element", asked)};
  const Element& element = resolver_.settle(*found);
  part.element = element.name;
  if (!element.error.empty()) throw schema::Unresolved{std::string(element.error)};
  part.type = element.type.name;
}

void BindingReader::typeByName(Part& part, const Node& node, const parse::Definitions& in) {
  const schema::Asked asked = schema::askedName(node, node.get(Word::type));
  schema::TypeEntry* found =
      findForPart(asked, in, [&](const Name& name) { return resolver_.findType(name); });
  if (!found) throw schema::Unresolved{schema::notFound("type", asked)};
  part.type = found->name;
}

}  // namespace ztservice
