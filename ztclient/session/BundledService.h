#pragma once

#include <string>

/// The description of a job service that the command brings along.
namespace bundled {

constexpr const char* serviceName = "jobs.wsdl";

/// The WSDL document, its service at the server.
/// \param server scheme, host and port.
std::string serviceAt(const std::string& server);

}  // namespace bundled
