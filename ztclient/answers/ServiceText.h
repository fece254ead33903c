#pragma once

#include <cstddef>
#include <iosfwd>

#include "ztservice/Service.h"

/// A whole service for a reader: services, ports and operations, and what goes in and out as an indented
/// form. A type is opened once in an operation; where it comes again, it is named only.
void writeServiceText(const ztservice::Service& service, std::ostream& out);

/// "SOAP 1.1", "another protocol".
const char* protocolName(ztservice::Protocol protocol) noexcept;

/// How much of a service cannot be resolved: whatever has an error.
size_t countUnresolved(const ztservice::Service& service);
