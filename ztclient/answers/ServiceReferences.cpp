#include "ztclient/answers/ServiceReferences.h"

using ztservice::Message;
using ztservice::Part;
using ztservice::Service;
using ztservice::Type;
using ztservice::TypeReference;

namespace {

using serviceReferences::Visit;

// What is written inside something nests no deeper than the service says.
void refer(const TypeReference& reference, const Visit& visit) {
  if (reference.anonymous)
    serviceReferences::ofType(*reference.anonymous, visit);
  else if (!reference.name.empty())
    visit(reference.name);
}

void ofPart(const Service& service, const Part& part, const Visit& visit) {
  const ztservice::Element* element = part.element.empty() ? nullptr : service.element(part.element);
  if (element)
    refer(element->type, visit);
  else if (!part.type.empty())
    visit(part.type);
}

void ofMessage(const Service& service, const Message& message, const Visit& visit) {
  for (const Part& part : message.parts) ofPart(service, part, visit);
  for (const ztservice::Header& header : message.headers) {
    if (header.part) ofPart(service, *header.part, visit);
  }
  for (const ztservice::Attachment& one : message.attachments) ofPart(service, one.part, visit);
}

}  // namespace

void serviceReferences::ofType(const Type& type, const Visit& visit) {
  if (!type.base.empty()) visit(type.base);
  if (type.anonymousBase) ofType(*type.anonymousBase, visit);
  for (const TypeReference& one : type.memberTypes) refer(one, visit);
  if (type.item) refer(*type.item, visit);
  if (type.content) refer(*type.content, visit);
  for (const ztservice::Member& one : type.members) refer(one.type, visit);
  for (const ztservice::Attribute& one : type.attributes) refer(one.type, visit);
}

void serviceReferences::ofOperation(const Service& service, const ztservice::Operation& operation,
                                    const Visit& visit) {
  if (operation.input()) ofMessage(service, *operation.input(), visit);
  if (operation.output()) ofMessage(service, *operation.output(), visit);
  for (const ztservice::Fault& fault : operation.faults()) {
    for (const Part& part : fault.parts) ofPart(service, part, visit);
  }
}
