// Calls of services: values of Python as those of a request, and answers the other way.
#include "ztservice/call/Client.h"

#include <pybind11/stl.h>

#include "Errors.h"
#include "Module.h"
#include "Texts.h"
#include "ztservice/call/Template.h"

namespace {

using namespace ztservice::call;
using ztservice::Service;

// As deep as a request may be, and some more, so that the library is who refuses.
constexpr int deepest = 300;

Value valueOf(py::handle object, int depth);

Value memberwise(const py::dict& dict, int depth) {
  Value out{Value::Object{}};
  for (const auto& [key, value] : dict)
    out.object().emplace_back(py::cast<std::string>(key), valueOf(value, depth + 1));
  return out;
}

Value itemwise(py::handle items, int depth) {
  Value::List list;
  for (const py::handle item : items) list.push_back(valueOf(item, depth + 1));
  return Value(std::move(list));
}

// dict, list, tuple, str, bool, int, float, Decimal, None; what has isoformat(), as dates have; bytes in
// Base64.
Value valueOf(py::handle object, int depth) {
  if (depth > deepest) throw py::value_error("the values are nested too deep");
  if (object.is_none()) return {};
  if (py::isinstance<py::bool_>(object)) return Value(py::cast<bool>(object));
  if (py::isinstance<py::str>(object)) return Value(py::cast<std::string>(object));
  if (py::isinstance<py::dict>(object)) return memberwise(py::reinterpret_borrow<py::dict>(object), depth);
  if (py::isinstance<py::list>(object) || py::isinstance<py::tuple>(object)) return itemwise(object, depth);
  if (py::isinstance<py::int_>(object)) return Value::number(py::cast<std::string>(py::str(object)));
  return py::cast<Value>(py::module_::import("ztbaseclient._call").attr("as_value")(object));
}

py::object objectOf(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::null:
      return py::none();
    case Value::Kind::boolean:
      return py::bool_(value.boolean());
    case Value::Kind::number:
      return py::module_::import("ztbaseclient._call").attr("number")(value.text());
    case Value::Kind::text:
      return py::str(value.text());
    case Value::Kind::list: {
      py::list list;
      for (const Value& one : value.list()) list.append(objectOf(one));
      return list;
    }
    case Value::Kind::object:
      break;
  }
  py::dict dict;
  for (const auto& [name, one] : value.object()) dict[py::str(name)] = objectOf(one);
  return dict;
}

Target targetOf(const Service& service, const std::string& operation, const std::string& port) {
  const Target target = findOperation(service, operation, port);
  if (!target.port) throw py::key_error(operation);
  return target;
}

// What is wrong with the values goes along as the reason of each path.
template <class Body>
auto withFindings(const Body& body) {
  try {
    return body();
  } catch (const RequestError& e) {
    py::list findings;
    for (const Finding& one : e.findings()) findings.append(py::make_tuple(one.path, one.text));
    const py::object error = py::module_::import("ztbaseclient._errors")
                                 .attr("RequestError")(py::str(e.findings().front().toString()), findings);
    PyErr_SetObject(py::type::of(error).ptr(), error.ptr());
    throw py::error_already_set();
  }
}

Request requestOf(const Service& service, const Target& target, const py::object& values,
                  const std::string& address, bool check, const std::map<std::string, std::string>& headers) {
  RequestOptions options;
  options.address = address;
  options.check = check;
  Request request = withFindings(
      [&] { return makeRequest(service, *target.port, *target.operation, valueOf(values, 0), options); });
  for (const auto& header : headers) request.headers.push_back(header);
  return request;
}

}  // namespace

void addCalls(py::module_& module) {
  py::class_<Value>(module, "CallValue")
      .def_static("number", [](const std::string& text) { return Value::number(text); })
      .def_static("text", [](const std::string& text) { return Value(text); });
  py::class_<Client>(module, "Client")
      .def(py::init([](const Service& service, double timeout, const std::string& user,
                       const std::string& bearer, const std::string& authorities, unsigned retries,
                       bool strict) {
             ClientOptions options;
             options.transfer = std::chrono::milliseconds(static_cast<int64_t>(timeout * 1000));
             options.user = user;
             options.bearer = bearer;
             options.authorities = authorities;
             options.retries = retries;
             options.answer.isStrict = strict;
             return std::make_unique<Client>(service, std::move(options));
           }),
           py::arg("service"), py::arg("timeout"), py::arg("user"), py::arg("bearer"), py::arg("authorities"),
           py::arg("retries"), py::arg("strict"))
      .def("call", [](Client& self, const Service& service, const std::string& operation,
                      const std::string& port, const py::object& values, const std::string& address,
                      bool check, const std::map<std::string, std::string>& headers) {
        const Target target = targetOf(service, operation, port);
        const Request request = requestOf(service, target, values, address, check, headers);
        Answer answer;
        {
          const py::gil_scoped_release released;
          answer = self.read(*target.port, *target.operation, self.send(request));
        }
        py::object fault = py::none();
        if (answer.fault)
          fault = py::make_tuple(answer.fault->code, answer.fault->reason, answer.fault->actor,
                                 objectOf(answer.fault->detail));
        return py::make_tuple(objectOf(answer.values), objectOf(answer.headers), fault, answer.warnings);
      });
  module.def("request_of", [](const Service& service, const std::string& operation, const std::string& port,
                              const py::object& values, const std::string& address, bool check) {
    const Target target = targetOf(service, operation, port);
    return py::bytes(requestOf(service, target, values, address, check, {}).toWire());
  });
  module.def("template_of",
             [](const Service& service, const std::string& operation, const std::string& port, bool full) {
               const Target target = targetOf(service, operation, port);
               TemplateOptions options;
               options.isFull = full;
               return makeTemplate(service, *target.port, *target.operation, options);
             });
}
