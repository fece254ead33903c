// Whole services: views of what a service owns, each of which keeps the service.
#include <pybind11/stl.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <sstream>

#include "Errors.h"
#include "Module.h"
#include "Texts.h"
#include "ztclient/answers/ServiceJson.h"
#include "ztservice/Service.h"

namespace {

using ztservice::Service;

// What belongs to a service, and the service with it.
template <class T>
struct Of {
  Service service;
  const T* it;
  const T* operator->() const { return it; }
};

template <class T>
Of<T> of(const Service& service, const T& it) {
  return {service, &it};
}

py::str text(std::string_view bytes) {
  return py::reinterpret_steal<py::str>(
      PyUnicode_DecodeUTF8(bytes.data(), static_cast<Py_ssize_t>(bytes.size()), "surrogatepass"));
}
py::object textOrNone(std::string_view bytes) {
  return bytes.empty() ? py::object(py::none()) : py::object(text(bytes));
}
py::object textOrNone(const std::optional<std::string_view>& bytes) {
  return bytes ? py::object(text(*bytes)) : py::object(py::none());
}
py::object nameOf(const ztservice::Name& name) {
  if (name.empty()) return py::none();
  return py::module_::import("ztbaseclient").attr("Name")(text(name.space), text(name.local));
}
ztservice::Name nameFrom(const std::string& space, const std::string& local) { return {space, local}; }

template <class T, class List>
py::list listOf(const Service& service, const List& all) {
  py::list list;
  for (const T& one : all) list.append(py::cast(Of<T>{service, &one}));
  return list;
}
template <class T>
py::list pointedAt(const Service& service, std::span<const T* const> all) {
  py::list list;
  for (const T* one : all) list.append(py::cast(Of<T>{service, one}));
  return list;
}
py::list textsOf(const std::vector<std::string_view>& all) {
  py::list list;
  for (std::string_view one : all) list.append(text(one));
  return list;
}

// The type itself; None where it cannot be had.
py::object typeOf(const Service& service, const ztservice::TypeReference& reference) {
  const ztservice::Type* type = reference.anonymous      ? reference.anonymous
                                : reference.name.empty() ? nullptr
                                                         : service.type(reference.name);
  return type ? py::cast(of(service, *type)) : py::object(py::none());
}

py::object wildcardOf(const std::optional<ztservice::Wildcard>& any) {
  return any ? py::object(py::make_tuple(text(any->space), text(any->process))) : py::object(py::none());
}

// A class of views: equal when they are of the same thing.
template <class T>
py::class_<Of<T>> view(py::module_& module, const char* name, const char* help) {
  return py::class_<Of<T>>(module, name, help)
      .def(
          "__eq__", [](const Of<T>& a, const Of<T>& b) { return a.it == b.it; }, py::is_operator())
      .def("__hash__", [](const Of<T>& a) { return std::hash<const T*>()(a.it); });
}

template <class T, class Owner, class Member>
void addText(py::class_<Owner>& cls, const char* name, Member T::*member, const char* help) {
  cls.def_property_readonly(
      name, [member](const Owner& self) { return text(self.it->*member); }, help);
}
template <class T>
void addError(py::class_<Of<T>>& cls) {
  cls.def_property_readonly(
      "error", [](const Of<T>& self) { return textOrNone(self.it->error); },
      "str or None : What is missing, where it cannot be resolved.");
}

const char* protocolOf(ztservice::Protocol protocol) {
  static constexpr const char* names[] = {"soap11", "soap12", "http", "other"};
  return names[static_cast<size_t>(protocol)];
}

void addTypes(py::module_& module) {
  using ztservice::Attribute;
  using ztservice::Element;
  using ztservice::Member;
  using ztservice::Type;
  auto type = view<Type>(module, "Type", "A type with all that it has.");
  type.def_property_readonly(
          "kind",
          [](const Of<Type>& self) {
            static constexpr const char* kinds[] = {"atomic", "simple", "enumeration", "array", "complex"};
            return kinds[static_cast<size_t>(self->kind)];
          })
      .def_property_readonly("name", [](const Of<Type>& self) { return nameOf(self->name); })
      .def_property_readonly("base", [](const Of<Type>& self) { return nameOf(self->base); })
      .def_property_readonly("primitive", [](const Of<Type>& self) { return textOrNone(self->primitive); })
      .def_property_readonly("facets",
                             [](const Of<Type>& self) {
                               py::list list;
                               for (const auto& facet : self->facets)
                                 list.append(py::make_tuple(text(facet.name), text(facet.value)));
                               return list;
                             })
      .def_property_readonly("values", [](const Of<Type>& self) { return textsOf(self->values); })
      .def_property_readonly("item",
                             [](const Of<Type>& self) {
                               return self->item ? typeOf(self.service, *self->item) : py::object(py::none());
                             })
      .def_property_readonly("item_name", [](const Of<Type>& self) { return textOrNone(self->itemName); })
      .def_property_readonly("abstract", [](const Of<Type>& self) { return self->isAbstract; })
      .def_property_readonly("mixed", [](const Of<Type>& self) { return self->mixed; })
      .def_property_readonly("members",
                             [](const Of<Type>& self) { return listOf<Member>(self.service, self->members); })
      .def_property_readonly(
          "attributes",
          [](const Of<Type>& self) { return listOf<Attribute>(self.service, self->attributes); })
      .def_property_readonly("derived",
                             [](const Of<Type>& self) {
                               py::list list;
                               for (const auto& name : self->derived) list.append(nameOf(name));
                               return list;
                             })
      .def_property_readonly("file", [](const Of<Type>& self) { return textOrNone(self->file); })
      .def_property_readonly("line", [](const Of<Type>& self) { return self->line; });
  addError(type);

  auto member = view<Member>(module, "Member", "An element inside a complex type, or a wildcard.");
  member.def_property_readonly("name", [](const Of<Member>& self) { return nameOf(self->name); })
      .def_property_readonly("type", [](const Of<Member>& self) { return typeOf(self.service, self->type); })
      .def_property_readonly("type_name", [](const Of<Member>& self) { return nameOf(self->type.name); })
      .def_property_readonly("any", [](const Of<Member>& self) { return wildcardOf(self->any); })
      .def_property_readonly("min", [](const Of<Member>& self) { return self->min; })
      .def_property_readonly("max",
                             [](const Of<Member>& self) {
                               return self->max == Member::unbounded ? py::object(py::none())
                                                                     : py::object(py::int_(self->max));
                             })
      .def_property_readonly("nillable", [](const Of<Member>& self) { return self->nillable; })
      .def_property_readonly("choice", [](const Of<Member>& self) { return textOrNone(self->choice); })
      .def_property_readonly("default", [](const Of<Member>& self) { return textOrNone(self->defaultValue); })
      .def_property_readonly("fixed", [](const Of<Member>& self) { return textOrNone(self->fixedValue); });
  addError(member);

  auto attribute = view<Attribute>(module, "Attribute", "An attribute of a complex type.");
  attribute.def_property_readonly("name", [](const Of<Attribute>& self) { return nameOf(self->name); })
      .def_property_readonly("type",
                             [](const Of<Attribute>& self) { return typeOf(self.service, self->type); })
      .def_property_readonly("required", [](const Of<Attribute>& self) { return self->required; })
      .def_property_readonly("default",
                             [](const Of<Attribute>& self) { return textOrNone(self->defaultValue); })
      .def_property_readonly("fixed", [](const Of<Attribute>& self) { return textOrNone(self->fixedValue); });
  addError(attribute);

  auto element = view<Element>(module, "Element", "A global element.");
  element.def_property_readonly("name", [](const Of<Element>& self) { return nameOf(self->name); })
      .def_property_readonly("type", [](const Of<Element>& self) { return typeOf(self.service, self->type); })
      .def_property_readonly("nillable", [](const Of<Element>& self) { return self->nillable; })
      .def_property_readonly("abstract", [](const Of<Element>& self) { return self->isAbstract; })
      .def_property_readonly("default",
                             [](const Of<Element>& self) { return textOrNone(self->defaultValue); })
      .def_property_readonly("fixed", [](const Of<Element>& self) { return textOrNone(self->fixedValue); });
  addError(element);
}

void addMessages(py::module_& module) {
  using ztservice::Fault;
  using ztservice::Header;
  using ztservice::Message;
  using ztservice::Part;
  auto part = view<Part>(module, "Part", "A part of a message: a global element, or a type.");
  part.def_property_readonly("name", [](const Of<Part>& self) { return text(self->name); })
      .def_property_readonly("element",
                             [](const Of<Part>& self) -> py::object {
                               const ztservice::Element* element =
                                   self->element.empty() ? nullptr : self.service.element(self->element);
                               return element ? py::cast(of(self.service, *element)) : py::object(py::none());
                             })
      .def_property_readonly("element_name", [](const Of<Part>& self) { return nameOf(self->element); })
      .def_property_readonly("type",
                             [](const Of<Part>& self) -> py::object {
                               const ztservice::Element* element =
                                   self->element.empty() ? nullptr : self.service.element(self->element);
                               return element ? typeOf(self.service, element->type)
                                              : typeOf(self.service, {
                                                                         self->type,
                                                                         nullptr,
                                                                     });
                             })
      .def_property_readonly("type_name", [](const Of<Part>& self) { return nameOf(self->type); });
  addError(part);

  auto header = view<Header>(module, "Header", "A header of a message.");
  header.def_property_readonly("message", [](const Of<Header>& self) { return nameOf(self->message); })
      .def_property_readonly("use", [](const Of<Header>& self) { return text(self->use); })
      .def_property_readonly("part", [](const Of<Header>& self) {
        return self->part ? py::cast(of(self.service, *self->part)) : py::object(py::none());
      });
  addError(header);

  auto fault = view<Fault>(module, "Fault", "What an operation fails with.");
  fault.def_property_readonly("name", [](const Of<Fault>& self) { return text(self->name); })
      .def_property_readonly("message", [](const Of<Fault>& self) { return nameOf(self->message); })
      .def_property_readonly("parts",
                             [](const Of<Fault>& self) { return listOf<Part>(self.service, self->parts); });
  addError(fault);

  auto message = view<Message>(module, "Message", "What goes in or comes out of an operation.");
  message.def_property_readonly("name", [](const Of<Message>& self) { return text(self->name); })
      .def_property_readonly("message", [](const Of<Message>& self) { return nameOf(self->message); })
      .def_property_readonly("use", [](const Of<Message>& self) { return text(self->use); })
      .def_property_readonly("parts",
                             [](const Of<Message>& self) { return listOf<Part>(self.service, self->parts); })
      .def_property_readonly(
          "headers", [](const Of<Message>& self) { return listOf<Header>(self.service, self->headers); });
  addError(message);
}

py::object messageOf(const Service& service, const std::optional<ztservice::Message>& message) {
  return message ? py::cast(of(service, *message)) : py::object(py::none());
}

void addPorts(py::module_& module) {
  using ztservice::Operation;
  using ztservice::Port;
  using ztservice::PortGroup;
  view<Operation>(module, "Operation", "An operation of a port: what it takes, gives and fails with.")
      .def_property_readonly("name", [](const Of<Operation>& self) { return text(self->name()); })
      .def_property_readonly("style", [](const Of<Operation>& self) { return text(self->style()); })
      .def_property_readonly("soap_action",
                             [](const Of<Operation>& self) { return text(self->soapAction()); })
      .def_property_readonly("location", [](const Of<Operation>& self) { return text(self->location()); })
      .def_property_readonly("input",
                             [](const Of<Operation>& self) { return messageOf(self.service, self->input()); })
      .def_property_readonly(
          "output", [](const Of<Operation>& self) { return messageOf(self.service, self->output()); })
      .def_property_readonly(
          "faults",
          [](const Of<Operation>& self) { return listOf<ztservice::Fault>(self.service, self->faults()); })
      .def_property_readonly("error", [](const Of<Operation>& self) { return textOrNone(self->error()); })
      .def("__repr__",
           [](const Of<Operation>& self) { return "<Operation " + std::string(self->name()) + ">"; });
  view<Port>(module, "Port", "Where a service can be called, and its operations.")
      .def_property_readonly("name", [](const Of<Port>& self) { return text(self->name()); })
      .def_property_readonly("address", [](const Of<Port>& self) { return text(self->address()); })
      .def_property_readonly("protocol", [](const Of<Port>& self) { return protocolOf(self->protocol()); })
      .def_property_readonly("transport", [](const Of<Port>& self) { return text(self->transport()); })
      .def_property_readonly("verb", [](const Of<Port>& self) { return text(self->verb()); })
      .def_property_readonly("binding", [](const Of<Port>& self) { return nameOf(self->binding()); })
      .def_property_readonly("port_type", [](const Of<Port>& self) { return nameOf(self->portType()); })
      .def_property_readonly(
          "operations",
          [](const Of<Port>& self) { return listOf<Operation>(self.service, self->operations()); })
      .def_property_readonly("error", [](const Of<Port>& self) { return textOrNone(self->error()); })
      .def("__getitem__",
           [](const Of<Port>& self, const std::string& name) {
             for (const Operation& one : self->operations())
               if (one.name() == name) return of(self.service, one);
             throw py::key_error(name);
           })
      .def("__contains__",
           [](const Of<Port>& self, const py::object& name) {
             for (const Operation& one : self->operations())
               if (text(one.name()).equal(name)) return true;
             return false;
           })
      .def("__len__", [](const Of<Port>& self) { return self->operations().size(); })
      .def("__iter__",
           [](const Of<Port>& self) { return py::iter(listOf<Operation>(self.service, self->operations())); })
      .def("__repr__", [](const Of<Port>& self) { return "<Port " + std::string(self->name()) + ">"; });
  view<PortGroup>(module, "PortGroup", "A service element: ports that belong together.")
      .def_property_readonly("name", [](const Of<PortGroup>& self) { return nameOf(self->name()); })
      .def_property_readonly(
          "ports", [](const Of<PortGroup>& self) { return listOf<Port>(self.service, self->ports()); });
}

std::string jsonOf(const Service& service) {
  const py::gil_scoped_release released;
  std::ostringstream out;
  writeServiceJson(service, out);
  return std::move(out).str();
}

// As the loader itself reads: in pieces, never by a length that it was told. False with the reason.
bool readWhole(const std::string& path, uint64_t most, std::string& bytes) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
  std::string read;
  std::vector<char> piece(1 << 16);
  while (file) {
    const size_t got = std::fread(piece.data(), 1, piece.size(), file.get());
    read.append(piece.data(), got);
    if (read.size() > most) {
      bytes = "larger than a document may be";
      return false;
    }
    if (got == 0) break;
  }
  if (!file || std::ferror(file.get())) {
    bytes = std::strerror(errno);
    return false;
  }
  bytes = std::move(read);
  return true;
}

// files: what was read before, by path, instead of the files themselves; None reads them.
py::tuple load(py::handle location, bool fetch, const std::vector<std::string>& catalogs,
               const py::object& files) {
  ztservice::Options options;
  options.fetch = fetch;
  options.catalogs = catalogs;
  std::map<std::string, std::string> read;
  const bool replay = !files.is_none();
  if (replay) read = py::cast<std::map<std::string, std::string>>(files);
  const std::string path = toPath(location);
  options.readFile = [&](const std::string& name, std::string& bytes) {
    const auto known = read.find(name);
    if (known != read.end()) {
      bytes = known->second;
      return true;
    }
    if (replay) {
      bytes = "No such file or directory";
      return false;
    }
    if (!readWhole(name, options.limits.fileBytes, bytes)) return false;
    read[name] = bytes;
    return true;
  };
  std::optional<Service> service;
  {
    const py::gil_scoped_release released;
    service.emplace(ztservice::load(path, options));
  }
  py::dict kept;
  for (const auto& [name, bytes] : read) kept[py::bytes(name)] = py::bytes(bytes);
  return py::make_tuple(*service, kept);
}

}  // namespace

void addServices(py::module_& module) {
  addTypes(module);
  addMessages(module);
  addPorts(module);
  py::class_<Service>(module, "ServiceModel")
      .def_property_readonly("target_namespace",
                             [](const Service& self) { return text(self.targetNamespace()); })
      .def_property_readonly(
          "services", [](const Service& self) { return listOf<ztservice::PortGroup>(self, self.services()); })
      .def_property_readonly("ports",
                             [](const Service& self) { return listOf<ztservice::Port>(self, self.ports()); })
      .def_property_readonly(
          "elements",
          [](const Service& self) { return pointedAt<ztservice::Element>(self, self.elements()); })
      .def_property_readonly(
          "types", [](const Service& self) { return pointedAt<ztservice::Type>(self, self.types()); })
      .def_property_readonly("warnings",
                             [](const Service& self) {
                               py::list list;
                               for (const auto& one : self.warnings()) list.append(text(one.toString()));
                               return list;
                             })
      .def("type",
           [](const Service& self, const std::string& space, const std::string& local) -> py::object {
             const ztservice::Type* type = self.type(nameFrom(space, local));
             return type ? py::cast(of(self, *type)) : py::object(py::none());
           })
      .def("element",
           [](const Service& self, const std::string& space, const std::string& local) -> py::object {
             const ztservice::Element* element = self.element(nameFrom(space, local));
             return element ? py::cast(of(self, *element)) : py::object(py::none());
           })
      .def("narrowed_to",
           [](const Service& self, const std::string& operation) { return self.narrowedTo(operation); })
      .def("json", [](const Service& self) { return text(jsonOf(self)); });
  module.def("load_service", load);
}
