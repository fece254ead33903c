#include "ztservice/call/Answer.h"

#include <algorithm>

#include "ztservice/call/AnswerValues.h"
#include "ztservice/call/Binary.h"
#include "ztservice/call/ValueFacts.h"

namespace ztservice::call {

namespace {

using Element = AnswerTree::Element;

// The envelope, and what is in it.
class AnswerReader : private AnswerValues {
 public:
  using AnswerValues::AnswerValues;
  using AnswerValues::unusedParts;

  void read(const Port& port, const Operation& operation, const std::optional<Message>& message) {
    const Element& root = tree_.root();
    isEncoded_ = message && message->use == "encoded";
    if (port.protocol() == Protocol::http) {
      http(root, message);
      return;
    }
    if (root.name.local != "Envelope" || !isEnvelope(root.name.space))
      fail("is no SOAP envelope, but has the element " + std::string(root.name.local));
    const Element* body = root.child("Body");
    if (!body) fail("has no body");
    if (const Element* header = root.child("Header")) headers(*header);
    const Element* first = body->children.empty() ? nullptr : body->children.front();
    if (first && first->name.local == "Fault" && isEnvelope(first->name.space)) {
      fault(*first);
      return;
    }
    if (!message) {
      answer_.values = Value(Value::Object{});
      return;
    }
    if (operation.style() == "rpc")
      rpc(first, *message);
    else
      document(*body, *message);
  }

 private:
  using AnswerValues::typeOf;

  void http(const Element& root, const std::optional<Message>& message) {
    const Part* part = message && !message->parts.empty() ? &message->parts[0] : nullptr;
    answer_.values = value(root, part ? typeOf(*part) : nullptr, false);
  }

  const Type* typeOf(const Part& part) {
    const ztservice::Element* element = part.element.empty() ? nullptr : service_.element(part.element);
    if (element) return simple_.typeOf(element->type);
    return part.type.empty() ? nullptr : service_.type(part.type);
  }

  void headers(const Element& header) {
    for (const auto& one : header.children) {
      const Step step(*this, "$headers." + std::string(one->name.local));
      answer_.headers.add(one->name.local, value(*one, typeOf(one->name), true));
    }
  }

  void document(const Element& body, const Message& output) {
    if (output.parts.size() != 1) {
      answer_.values = Value(Value::Object{});
      for (const auto& child : body.children) {
        const auto part = std::find_if(output.parts.begin(), output.parts.end(), [&](const Part& one) {
          return one.element.empty() ? one.name == child->name.local : one.element == child->name;
        });
        if (part == output.parts.end())
          unknown(*child, answer_.values);
        else
          add(answer_.values, part->name, *child, typeOf(*part), false);
      }
      return;
    }
    const Part& part = output.parts[0];
    if (part.element.empty()) {
      answer_.values = value(body, typeOf(part), false);
      return;
    }
    const Element* found = nullptr;
    for (const auto& child : body.children) {
      if (child->name == part.element) found = child;
    }
    if (!found && !body.children.empty()) {
      found = body.children.front();
      doubt("the body has " + keyOf(found->name) + " in the place of " + keyOf(part.element));
    }
    if (!found) fail("the body is empty, and should have " + keyOf(part.element));
    answer_.values = value(*found, typeOf(part), false);
  }

  void rpc(const Element* wrapper, const Message& output) {
    answer_.values = Value(Value::Object{});
    if (!wrapper) {
      if (!output.parts.empty()) fail("the body is empty");
      return;
    }
    for (const auto& child : wrapper->children) {
      const auto part = std::find_if(output.parts.begin(), output.parts.end(),
                                     [&](const Part& one) { return one.name == child->name.local; });
      // Names of results are free where there is only one.
      const bool isOnly = output.parts.size() == 1 && wrapper->children.size() == 1;
      if (part != output.parts.end())
        add(answer_.values, part->name, *child, typeOf(*part), false);
      else if (isOnly)
        add(answer_.values, output.parts[0].name, *child, typeOf(output.parts[0]), false);
      else
        unknown(*child, answer_.values);
    }
  }

  void fault(const Element& element) {
    AnswerFault& out = answer_.fault.emplace();
    if (element.name.space == soap12Space) {
      const Element* code = element.child("Code");
      for (; code; code = code->child("Subcode")) {
        const Element* text = code->child("Value");
        if (text)
          out.code += (out.code.empty() ? "" : "/") + std::string(tree_.resolved(*text, text->text).local);
      }
      if (const Element* reason = element.child("Reason")) {
        if (const Element* text = reason->child("Text")) out.reason = text->text;
      }
      for (const char* name : {"Node", "Role"}) {
        if (const Element* one = element.child(name)) out.actor += (out.actor.empty() ? "" : " ") + one->text;
      }
    } else {
      if (const Element* code = element.child("faultcode"))
        out.code = tree_.resolved(*code, code->text).local;
      if (const Element* reason = element.child("faultstring")) out.reason = reason->text;
      if (const Element* actor = element.child("faultactor")) out.actor = actor->text;
    }
    const Element* detail = element.child(element.name.space == soap12Space ? "Detail" : "detail");
    if (!detail) return;
    const Step step(*this, "detail");
    if (detail->children.empty()) {
      if (!detail->isWhiteSpace()) out.detail = Value(detail->text);
      return;
    }
    for (const auto& one : detail->children) addUnknown(out.detail, *one);
  }
};

// The parts of the message that they are: by their ids (WS-I Attachments Profile 1.0, 3.8), else in their
// order where there are as many.
void nameParts(std::vector<MimePart>& parts, const Message& message) {
  std::vector<MimePart*> unnamed;
  std::vector<std::string_view> left;
  for (const Attachment& one : message.attachments) left.push_back(one.part.name);
  for (MimePart& part : parts) {
    const std::string id = idOf("cid:" + part.id);
    const auto named = std::find(left.begin(), left.end(), std::string_view(id).substr(0, id.find('=')));
    if (id.find('=') == id.npos || named == left.end()) {
      unnamed.push_back(&part);
      continue;
    }
    part.part = *named;
    left.erase(named);
  }
  if (unnamed.size() != left.size()) return;
  for (size_t i = 0; i < left.size(); ++i) unnamed[i]->part = left[i];
}

Answer readMessage(const Service& service, const Port& port, const Operation& operation,
                   const std::optional<Message>& message, std::string_view xml, const AnswerOptions& options,
                   std::span<const MimePart> parts, const char* what) {
  const AnswerTree tree(xml, options.limits, what);
  Answer answer;
  AnswerReader reader(service, tree, options, answer, parts);
  reader.read(port, operation, message);
  answer.attachments = reader.unusedParts();
  if (message) nameParts(answer.attachments, *message);
  return answer;
}

}  // namespace

Answer readAnswer(const Service& service, const Port& port, const Operation& operation, std::string_view xml,
                  const AnswerOptions& options, std::span<const MimePart> attachments) {
  return readMessage(service, port, operation, operation.output(), xml, options, attachments, "answer");
}

Answer readRequest(const Service& service, const Port& port, const Operation& operation, std::string_view xml,
                   const AnswerOptions& options, std::span<const MimePart> attachments) {
  return readMessage(service, port, operation, operation.input(), xml, options, attachments, "request");
}

Target operationOf(const Service& service, std::string_view xml, std::string_view action,
                   const AnswerLimits& limits) {
  const AnswerTree tree(xml, limits, "request");
  const Element& root = tree.root();
  const Element* body = root.child("Body");
  if (root.name.local != "Envelope" || !isEnvelope(root.name.space) || !body)
    throw Error({"request"}, "is no SOAP envelope");
  const bool is12 = root.name.space == soap12Space;
  const Name first = body->children.empty() ? Name() : body->children.front()->name;
  Target byAction;
  for (const Port& port : service.ports()) {
    if (port.protocol() != (is12 ? Protocol::soap12 : Protocol::soap11)) continue;
    for (const Operation& operation : port.operations()) {
      const Message* input = operation.input() ? &*operation.input() : nullptr;
      if (!byAction.port && !action.empty() && operation.soapAction() == action)
        byAction = {&port, &operation};
      const bool isRpc = operation.style() == "rpc";
      const Part* part = input && !input->parts.empty() ? &input->parts[0] : nullptr;
      const bool isMeant = isRpc  ? first.local == operation.name() && (!input || first.space == input->space)
                           : part ? first == part->element
                                  : first.empty();
      if (isMeant && (action.empty() || operation.soapAction().empty() || operation.soapAction() == action))
        return {&port, &operation};
    }
  }
  return byAction;
}

}  // namespace ztservice::call
