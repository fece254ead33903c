// Credentials, end points, links, cache requests and uploads.
#include <pybind11/stl.h>

#include <chrono>

#include "Errors.h"
#include "Module.h"
#include "Texts.h"
#include "tovin/HashMap.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/auth/CAuthRolesCache.h"
#include "ztbaseclient/auth/CCredentials.h"
#include "ztbaseclient/client/CCacheRequest.h"
#include "ztbaseclient/client/CProtocolLinkBuilder.h"
#include "ztbaseclient/client/LocatorEndpointIdentity.h"
#include "ztbaseclient/client/ztSoapUtils.h"

namespace {

using Setter = void (CCredentials::*)(const wchar_t*);
using Getter = const wchar_t* (CCredentials::*)() const noexcept;

struct TextField {
  const char* name;
  Setter set;
  Getter get;
};

constexpr TextField textFields[] = {
    {"user", &CCredentials::SetUsername, &CCredentials::GetUsername},
    {"password", &CCredentials::SetPassword, &CCredentials::GetPassword},
    {"domain", &CCredentials::SetDomain, &CCredentials::GetDomain},
    {"client_description", &CCredentials::SetClientDescription, &CCredentials::GetClientDescription},
    {"machine", &CCredentials::SetClientMachineName, &CCredentials::GetClientMachineName},
    {"client_version", &CCredentials::SetClientVersion, &CCredentials::GetClientVersion},
    {"xmldb", &CCredentials::SetXMLDBEndPoint, &CCredentials::GetXMLDBEndPoint},
    {"log", &CCredentials::SetLogEndPoint, &CCredentials::GetLogEndPoint},
    {"locator", &CCredentials::SetLocatorEndPoint, &CCredentials::GetLocatorEndPoint}};

constexpr uint32_t mostRoles = 1u << 20;

in_addr addressOf(const std::string& dotted) {
  in_addr address{};
  if (!dotted.empty() && !tovin::platform::fromDotted(dotted, address))
    throw py::value_error(dotted + " is no IPv4 address");
  return address;
}

std::string makeCredentials(const py::dict& texts, const std::string& serverIp, const std::string& clientIp,
                            int64_t loginTime, uint32_t bodyFlags, uint32_t headerFlags,
                            const std::vector<uint32_t>& roleBits, std::optional<uint32_t> roleBitCount) {
  CCredentials credentials;
  for (const TextField& field : textFields)
    (credentials.*field.set)(toWideWithoutNul(texts[field.name], field.name).c_str());
  uint32_t count = 0;
  for (uint32_t bit : roleBits) {
    if (bit >= mostRoles) throw py::value_error("a role's bit is too large");
    count = std::max(count, bit + 1);
  }
  if (roleBitCount && (*roleBitCount < count || *roleBitCount > mostRoles))
    throw py::value_error("role_bits is less than the roles need, or too large");
  tovin::BitsetValue bits(roleBitCount.value_or(count));
  for (uint32_t bit : roleBits) bits.setOn(bit);
  CAuthRoles roles;
  roles.SetRoleBits(bits);
  credentials.SetRoles(roles);
  credentials.SetServerIP(addressOf(serverIp));
  credentials.SetClientIP(addressOf(clientIp));
  credentials.SetLoginTime(loginTime);
  credentials.SetBodyFlags(bodyFlags);
  credentials.SetHeaderFlags(headerFlags);
  tovin::WideString text;
  credentials.GenerateCredentialsString(text);
  return tovin::wideToUtf8(text.view());
}

py::dict readCredentials(py::handle text) {
  CCredentials credentials(toWideWithoutNul(text, "credentials").c_str());
  py::dict read;
  read["format_version"] = credentials.GetFormatVersionNumber();
  read["random_number"] = credentials.GetRandomNumber();
  read["encrypted_length"] = credentials.GetEncryptedSectionLength();
  read["quick_checksum"] = credentials.GetQuickChecksum();
  read["checksum_ok"] = credentials.VerifyChecksum();
  read["header_flags"] = credentials.GetHeaderFlags();
  credentials.DecryptBody();
  read["body_flags"] = credentials.GetBodyFlags();
  read["server_ip"] = tovin::platform::toDotted(credentials.GetServerIP());
  read["client_ip"] = tovin::platform::toDotted(credentials.GetClientIP());
  read["login_time"] = credentials.GetLoginTime();
  for (const TextField& field : textFields) read[field.name] = toStr((credentials.*field.get)());
  const tovin::BitsetValue& bits = credentials.GetRoles().GetRoleBits();
  py::list on;
  for (unsigned bit = bits.getNextNoCheck(0); bit < bits.getNumBits(); bit = bits.getNextNoCheck(bit + 1))
    on.append(bit);
  read["roles"] = on;
  read["role_bits"] = bits.getNumBits();
  return read;
}

py::object endPoint(py::handle text, int release) {
  tovin::WideString out;
  LocatorEndpointIdentity::HostAndPortToEndPoint(toWideWithoutNul(text, "a server").c_str(), out, release);
  return toStr(out);
}

py::object hostOf(py::handle endPoint) {
  tovin::WideString out;
  LocatorEndpointIdentity::EndPointToHostAndPort(toWideWithoutNul(endPoint, "an end point").c_str(), out);
  return toStr(out);
}

py::object makeLink(py::handle server, py::handle protocol, const py::dict& parameters,
                    const py::object& session, bool anonymous, py::handle message, py::handle delimiter) {
  CProtocolLinkBuilder builder(toWideWithoutNul(server, "server").c_str(),
                               toWideWithoutNul(protocol, "protocol").c_str());
  for (const auto& [name, value] : parameters)
    builder.SetParameter(toWideWithoutNul(name, "a parameter's name").c_str(),
                         toWideWithoutNul(value, "a parameter's value").c_str());
  if (anonymous) builder.SetRunUser(CProtocolLinkBuilder::RunAsAnonymous, nullptr);
  if (!session.is_none())
    builder.SetRunUser(CProtocolLinkBuilder::RunAsSessionUser, toWideWithoutNul(session, "session").c_str());
  builder.SetProgressMessage(toWideWithoutNul(message, "message").c_str());
  builder.SetArrayDelimiter(toWideWithoutNul(delimiter, "array_delimiter").c_str());
  return toStr(builder.Construct());
}

py::object cache(const py::dict& arguments, uint32_t required, std::optional<uint32_t> mask) {
  CCacheRequest::Arguments map;
  for (const auto& [name, value] : arguments)
    map.put(tovin::WideString(toWideWithoutNul(name, "an argument's name")),
            tovin::WideString(toWideWithoutNul(value, "an argument's value")));
  CCacheRequest request;
  tovin::WideString text;
  if (!request.PopulateFromArguments(map, required, text)) throw tovin::Exception(text.c_str());
  request.AddToURLParameterBuffer(text, mask.value_or(request.GetArguments()));
  return toStr(text);
}

// Asked five times a second and after each piece: the GIL is taken for Python's own function and for what the
// keyboard says.
void upload(py::handle file, py::handle name, py::handle url, py::handle session, const py::object& job,
            bool afterContinue, const py::object& progress, const py::object& sentPath) {
  const std::wstring path = toFileName(file), leaf = toWideWithoutNul(name, "name"),
                     address = toWideWithoutNul(url, "url"), id = toWideWithoutNul(session, "session"),
                     jobId = job.is_none() ? std::wstring() : toWideWithoutNul(job, "job"),
                     sent = sentPath.is_none() ? std::wstring() : toWideWithoutNul(sentPath, "path");
  const bool asks = !progress.is_none();
  const py::gil_scoped_release released;
  auto before = std::chrono::steady_clock::now();
  ztSoapUtils::UploadViaCGI(
      path.c_str(), leaf.c_str(), job.is_none() ? nullptr : jobId.c_str(), id.c_str(), !afterContinue,
      address.c_str(),
      [&](uint64_t done, uint64_t length) {
        const auto now = std::chrono::steady_clock::now();
        if (!asks && now - before < std::chrono::milliseconds(50)) return true;
        before = now;
        const py::gil_scoped_acquire acquired;
        if (PyErr_CheckSignals() != 0) throw py::error_already_set();
        if (!asks) return true;
        const py::object answer = progress(done, length);
        return !answer.is(py::handle(Py_False));
      },
      sentPath.is_none() ? nullptr : sent.c_str());
}

// The names of a server's roles, in the library's own table.
class RoleNames {
 public:
  explicit RoleNames(const py::dict& bits) : table_(CAuthRolesCache::allocate()) {
    for (const auto& [name, bit] : bits) {
      const auto number = py::cast<uint64_t>(bit);
      if (number >= mostRoles) throw py::value_error("a role's bit is too large");
      table_->SetRole(static_cast<uint32_t>(number), toWideWithoutNul(name, "a role").c_str());
    }
  }

  uint32_t bit(py::handle name) const {
    const std::wstring wide = toWideWithoutNul(name, "a role");
    if (!table_->isRoleDefined(wide.c_str())) throw py::key_error(py::cast<std::string>(name));
    return table_->GetBit(wide.c_str());
  }
  py::object name(uint32_t bit) const {
    const wchar_t* found = table_->GetRole(bit);
    return found ? toStr(found) : py::object(py::none());
  }
  bool has(py::handle name) const {
    return py::isinstance<py::str>(name) && table_->isRoleDefined(toWideWithoutNul(name, "a role").c_str());
  }
  size_t size() const { return table_->getSize(); }

 private:
  tovin::Ptr<CAuthRolesCache> table_;
};

}  // namespace

void addRequests(py::module_& module) {
  py::class_<RoleNames>(module, "RoleTable")
      .def(py::init<const py::dict&>())
      .def("bit", &RoleNames::bit)
      .def("name", &RoleNames::name)
      .def("__contains__", &RoleNames::has)
      .def("__len__", &RoleNames::size);
  module.def("make_credentials", makeCredentials);
  module.def("read_credentials", readCredentials);
  module.def("end_point", endPoint);
  module.def("host_of", hostOf);
  module.def("link", makeLink);
  module.def("cache_arguments", cache);
  module.def("upload", upload);
}
