// Calls of services: values of Python as those of a request, and answers the other way.
#include "ztservice/call/Client.h"

#include <pybind11/stl.h>

#include "Errors.h"
#include "Module.h"
#include "Texts.h"
#include "ztservice/call/AttachmentFiles.h"
#include "ztservice/call/Template.h"

namespace {

using namespace ztservice::call;
using ztservice::Service;

// As deep as a request may be, and some more, so that the library is who refuses.
constexpr int deepest = 300;

Value valueOf(py::handle object, int depth);

Value fileOf(py::handle path) {
  return Value(py::cast<std::string>(py::module_::import("os").attr("fsdecode")(path)));
}

Value memberwise(const py::dict& dict, int depth) {
  Value out{Value::Object{}};
  for (const auto& [key, value] : dict) {
    const auto name = py::cast<std::string>(key);
    if (name == "$file") {
      // Only whoever writes a program has paths; what comes out of data must not name files.
      if (!py::hasattr(value, "__fspath__"))
        throw py::value_error("\"$file\" takes a path of pathlib, not a text");
      out.object().emplace_back(name, fileOf(value));
    } else {
      out.object().emplace_back(name, valueOf(value, depth + 1));
    }
  }
  return out;
}

Value itemwise(py::handle items, int depth) {
  Value::List list;
  for (const py::handle item : items) list.push_back(valueOf(item, depth + 1));
  return Value(std::move(list));
}

// dict, list, tuple, str, bool, int, float, Decimal, None; what has isoformat(), as dates have; bytes in
// Base64; paths, which are the content of their files.
Value valueOf(py::handle object, int depth) {
  if (depth > deepest) throw py::value_error("the values are nested too deep");
  if (object.is_none()) return {};
  if (py::isinstance<py::bool_>(object)) return Value(py::cast<bool>(object));
  if (py::isinstance<py::str>(object)) return Value(py::cast<std::string>(object));
  if (py::isinstance<py::dict>(object)) return memberwise(py::reinterpret_borrow<py::dict>(object), depth);
  if (py::isinstance<py::list>(object) || py::isinstance<py::tuple>(object)) return itemwise(object, depth);
  if (py::isinstance<py::int_>(object)) return Value::number(py::cast<std::string>(py::str(object)));
  if (py::hasattr(object, "__fspath__")) {
    Value file{Value::Object{}};
    file["$file"] = fileOf(object);
    return file;
  }
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

// Who calls, and whether the password goes as it is.
using User = std::tuple<std::string, std::string, bool, int64_t>;

struct HowToSend {
  bool mtom = false;
  bool gzip = false;
  std::optional<User> user = {};
};

Request requestOf(const Service& service, const Target& target, const py::object& values,
                  const std::string& address, bool check, const std::map<std::string, std::string>& headers,
                  const HowToSend& how) {
  RequestOptions options;
  options.address = address;
  options.check = check;
  options.files = true;
  options.mtom = how.mtom;
  options.gzip = how.gzip;
  if (how.user) {
    const auto& [user, password, isText, seconds] = *how.user;
    Security& security = options.security.emplace();
    security.user = user;
    security.password = password;
    security.isDigest = !isText;
    if (seconds > 0) security.lifetime = std::chrono::seconds(seconds);
  }
  Request request = withFindings(
      [&] { return makeRequest(service, *target.port, *target.operation, valueOf(values, 0), options); });
  for (const auto& header : headers) request.headers.push_back(header);
  return request;
}

py::list attachmentsOf(const Answer& answer) {
  py::list list;
  for (const MimePart& part : answer.attachments) {
    py::dict one;
    one["id"] = part.id;
    one["part"] = part.part;
    one["name"] = part.fileName;
    one["media_type"] = part.mediaType;
    if (part.file.empty())
      one["content"] = py::bytes(part.bytes);
    else
      one["file"] = part.file;
    list.append(std::move(one));
  }
  return list;
}

// A client, and the folder that it writes attachments to.
class Caller {
 public:
  Caller(const Service& service, ClientOptions options, const std::string& folder, HowToSend how)
      : how_(std::move(how)) {
    if (!folder.empty()) {
      files_.emplace(folder);
      options.fileFor = [this](const MimePart& part) { return files_->nameFor(part); };
    }
    client_.emplace(service, std::move(options));
  }
  Client& client() { return *client_; }
  const HowToSend& how() const { return how_; }

 private:
  HowToSend how_;
  std::optional<AttachmentFiles> files_;
  std::optional<Client> client_;
};

}  // namespace

void addCalls(py::module_& module) {
  py::class_<Value>(module, "CallValue")
      .def_static("number", [](const std::string& text) { return Value::number(text); })
      .def_static("text", [](const std::string& text) { return Value(text); });
  py::class_<Caller>(module, "Client")
      .def(py::init([](const Service& service, double timeout, const std::string& user,
                       const std::string& bearer, const std::string& authorities, unsigned retries,
                       bool strict, bool mtom, bool gzip, const std::optional<User>& security,
                       const std::string& folder) {
             ClientOptions options;
             options.transfer = std::chrono::milliseconds(static_cast<int64_t>(timeout * 1000));
             options.user = user;
             options.bearer = bearer;
             options.authorities = authorities;
             options.retries = retries;
             options.answer.isStrict = strict;
             return std::make_unique<Caller>(service, std::move(options), folder,
                                             HowToSend{mtom, gzip, security});
           }),
           py::arg("service"), py::arg("timeout"), py::arg("user"), py::arg("bearer"), py::arg("authorities"),
           py::arg("retries"), py::arg("strict"), py::arg("mtom"), py::arg("gzip"), py::arg("security"),
           py::arg("folder"))
      .def("call", [](Caller& self, const Service& service, const std::string& operation,
                      const std::string& port, const py::object& values, const std::string& address,
                      bool check, const std::map<std::string, std::string>& headers) {
        const Target target = targetOf(service, operation, port);
        const Request request = requestOf(service, target, values, address, check, headers, self.how());
        Answer answer;
        {
          const py::gil_scoped_release released;
          answer = self.client().read(*target.port, *target.operation, self.client().send(request));
        }
        py::object fault = py::none();
        if (answer.fault)
          fault = py::make_tuple(answer.fault->code, answer.fault->reason, answer.fault->actor,
                                 objectOf(answer.fault->detail));
        return py::make_tuple(objectOf(answer.values), objectOf(answer.headers), fault, answer.warnings,
                              attachmentsOf(answer));
      });
  module.def("request_of", [](const Service& service, const std::string& operation, const std::string& port,
                              const py::object& values, const std::string& address, bool check) {
    const Target target = targetOf(service, operation, port);
    return py::bytes(requestOf(service, target, values, address, check, {}, {}).toWire());
  });
  module.def("template_of",
             [](const Service& service, const std::string& operation, const std::string& port, bool full) {
               const Target target = targetOf(service, operation, port);
               TemplateOptions options;
               options.isFull = full;
               return makeTemplate(service, *target.port, *target.operation, options);
             });
}
