#include "ztclient/answers/ServiceJson.h"

#include <array>
#include <string>

#include "ztclient/answers/JsonWriter.h"

namespace {

using ztservice::Attribute;
using ztservice::Element;
using ztservice::Fault;
using ztservice::Header;
using ztservice::Member;
using ztservice::Message;
using ztservice::Name;
using ztservice::Operation;
using ztservice::Part;
using ztservice::Port;
using ztservice::Type;
using ztservice::TypeReference;
using ztservice::Wildcard;

class Writer {
 public:
  explicit Writer(std::ostream& out) : json_(out) {}

  void service(const ztservice::Service& service) {
    json_.beginObject();
    json_.text("targetNamespace", service.targetNamespace());
    list("services", service.services(), [&](const ztservice::PortGroup& group) { ports(group); });
    list("elements", service.elements(), [&](const Element* one) { element(*one); });
    list("types", service.types(), [&](const Type* one) { type(*one); });
    list("warnings", service.warnings(), [&](const ztservice::Warning& one) { json_.text(one.toString()); });
    json_.endObject();
  }

 private:
  template <class List, class Write>
  void list(std::string_view key, const List& all, const Write& write) {
    json_.key(key);
    json_.beginArray();
    for (const auto& one : all) write(one);
    json_.endArray();
  }
  void texts(std::string_view key, const std::vector<std::string_view>& all) {
    list(key, all, [&](std::string_view one) { json_.text(one); });
  }
  void name(std::string_view key, const Name& name) {
    json_.text(key, name.local);
    json_.text(std::string(key) + "Namespace", name.space);
  }
  void ownName(const Name& name) {
    json_.text("name", name.local);
    json_.text("namespace", name.space);
  }
  void error(std::string_view text) {
    if (!text.empty()) json_.text("error", text);
  }
  void optional(std::string_view key, const std::optional<std::string_view>& value) {
    if (value) json_.text(key, *value);
  }

  void ports(const ztservice::PortGroup& group) {
    json_.beginObject();
    ownName(group.name());
    list("ports", group.ports(), [&](const Port& one) { port(one); });
    json_.endObject();
  }

  void port(const Port& port) {
    static constexpr std::array<std::string_view, 4> protocols = {"soap11", "soap12", "http", "other"};
    json_.beginObject();
    json_.text("name", port.name());
    json_.text("address", port.address());
    json_.text("protocol", protocols[static_cast<size_t>(port.protocol())]);
    json_.text("transport", port.transport());
    json_.text("verb", port.verb());
    name("binding", port.binding());
    name("portType", port.portType());
    list("operations", port.operations(), [&](const Operation& one) { operation(one); });
    error(port.error());
    json_.endObject();
  }

  void operation(const Operation& operation) {
    json_.beginObject();
    json_.text("name", operation.name());
    json_.text("style", operation.style());
    json_.text("soapAction", operation.soapAction());
    json_.text("location", operation.location());
    texts("parameterOrder", operation.parameterOrder());
    message("input", operation.input());
    message("output", operation.output());
    list("faults", operation.faults(), [&](const Fault& one) { fault(one); });
    error(operation.error());
    json_.endObject();
  }

  void message(std::string_view key, const std::optional<Message>& message) {
    json_.key(key);
    if (!message) {
      json_.null();
      return;
    }
    json_.beginObject();
    json_.text("name", message->name);
    name("message", message->message);
    json_.text("action", message->action);
    json_.text("use", message->use);
    json_.text("encodingStyle", message->encodingStyle);
    json_.text("namespace", message->space);
    json_.text("content", message->content);
    list("parts", message->parts, [&](const Part& one) { part(one); });
    list("headers", message->headers, [&](const Header& one) { header(one); });
    list("attachments", message->attachments, [&](const ztservice::Attachment& one) {
      json_.beginObject();
      json_.key("part");
      part(one.part);
      texts("types", one.mediaTypes);
      json_.endObject();
    });
    error(message->error);
    json_.endObject();
  }

  void header(const Header& header) {
    json_.beginObject();
    name("message", header.message);
    json_.text("use", header.use);
    json_.text("namespace", header.space);
    json_.key("part");
    header.part ? part(*header.part) : json_.null();
    error(header.error);
    json_.endObject();
  }

  void fault(const Fault& fault) {
    json_.beginObject();
    json_.text("name", fault.name);
    name("message", fault.message);
    json_.text("use", fault.use);
    list("parts", fault.parts, [&](const Part& one) { part(one); });
    error(fault.error);
    json_.endObject();
  }

  void part(const Part& part) {
    json_.beginObject();
    json_.text("name", part.name);
    name("element", part.element);
    name("type", part.type);
    error(part.error);
    json_.endObject();
  }

  void element(const Element& element) {
    json_.beginObject();
    ownName(element.name);
    if (element.error.empty()) {
      reference(element.type);
      json_.flag("nillable", element.nillable);
      optional("default", element.defaultValue);
      optional("fixed", element.fixedValue);
      if (element.isAbstract) json_.flag("abstract", true);
      if (!element.substitutes.empty()) {
        list("substitutes", element.substitutes, [&](const Name& one) {
          json_.beginObject();
          ownName(one);
          json_.endObject();
        });
      }
    }
    error(element.error);
    json_.endObject();
  }

  void reference(const TypeReference& reference) {
    name("type", reference.name);
    if (!reference.anonymous) return;
    json_.key("anonymous");
    type(*reference.anonymous);
  }
  void referenceObject(const TypeReference& one) {
    json_.beginObject();
    reference(one);
    json_.endObject();
  }

  void type(const Type& type) {
    static constexpr std::array<std::string_view, 5> kinds = {"atomic", "simple", "enumeration", "array",
                                                              "complex"};
    json_.beginObject();
    json_.text("kind", kinds[static_cast<size_t>(type.kind)]);
    ownName(type.name);
    if (!type.error.empty()) {
      error(type.error);
      json_.endObject();
      return;
    }
    name("base", type.base);
    if (type.kind == Type::Kind::complex) {
      complex(type);
    } else if (type.kind == Type::Kind::array) {
      json_.text("itemName", type.itemName);
      reference(*type.item);
      json_.text("dimensions", type.dimensions);
    } else {
      simple(type);
    }
    json_.endObject();
  }

  void simple(const Type& type) {
    static constexpr std::array<std::string_view, 3> varieties = {"atomic", "list", "union"};
    if (type.anonymousBase) {
      json_.key("anonymous");
      this->type(*type.anonymousBase);
    }
    json_.text("variety", varieties[static_cast<size_t>(type.variety)]);
    json_.text("primitive", type.primitive);
    if (type.item) {
      json_.key("item");
      referenceObject(*type.item);
    }
    if (type.variety == Type::Variety::unionOf)
      list("memberTypes", type.memberTypes, [&](const TypeReference& one) { referenceObject(one); });
    if (type.kind == Type::Kind::atomic) return;
    list("facets", type.facets, [&](const ztservice::Facet& one) {
      json_.beginObject();
      json_.text("name", one.name);
      json_.text("value", one.value);
      json_.endObject();
    });
    if (!type.values.empty()) texts("values", type.values);
  }

  void complex(const Type& type) {
    if (type.isAbstract) {
      json_.flag("abstract", true);
      list("derived", type.derived, [&](const Name& one) {
        json_.beginObject();
        name("type", one);
        json_.endObject();
      });
    }
    if (type.mixed) json_.flag("mixed", true);
    if (type.content) {
      json_.key("content");
      referenceObject(*type.content);
    }
    list("members", type.members, [&](const Member& one) { member(one); });
    list("attributes", type.attributes, [&](const Attribute& one) { attribute(one); });
    if (!type.anyAttribute) return;
    json_.key("anyAttribute");
    json_.beginObject();
    json_.text("namespace", type.anyAttribute->space);
    json_.text("process", type.anyAttribute->process);
    json_.endObject();
  }

  void member(const Member& member) {
    json_.beginObject();
    if (member.any) {
      json_.text("any", member.any->space);
      json_.text("process", member.any->process);
      bounds(member);
    } else if (!member.error.empty()) {
      if (!member.name.empty()) ownName(member.name);
      error(member.error);
      json_.endObject();
      return;
    } else {
      ownName(member.name);
      reference(member.type);
      bounds(member);
      json_.flag("nillable", member.nillable);
      if (member.isReference) json_.flag("ref", true);
    }
    if (!member.choice.empty()) json_.text("choice", member.choice);
    if (member.group > 0) json_.number("group", member.group);
    optional("default", member.defaultValue);
    optional("fixed", member.fixedValue);
    json_.endObject();
  }

  void bounds(const Member& member) {
    json_.number("min", member.min);
    if (member.max == Member::unbounded) {
      json_.text("max", "unbounded");
    } else {
      json_.number("max", member.max);
    }
  }

  void attribute(const Attribute& attribute) {
    json_.beginObject();
    ownName(attribute.name);
    if (attribute.error.empty()) {
      reference(attribute.type);
      json_.text("use", attribute.required ? "required" : "optional");
      optional("default", attribute.defaultValue);
      optional("fixed", attribute.fixedValue);
    }
    error(attribute.error);
    json_.endObject();
  }

  JsonWriter json_;
};

}  // namespace

void writeServiceJson(const ztservice::Service& service, std::ostream& out) {
  Writer(out).service(service);
  out << '\n';
}
