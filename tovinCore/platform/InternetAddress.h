#pragma once

#include <string>
#include <string_view>

#include "tovinCore/Export.h"

// The least that declares in_addr: the socket headers would bring in far more than a record of four bytes
// needs.
#ifdef _WIN32
#include <inaddr.h>
#else
#include <netinet/in.h>
#endif

/// IPv4 addresses, in network order as in_addr holds them.
namespace tovin::platform {

/// "192.0.2.7".
TOVINCORE_API std::string toDotted(in_addr address);

/// Reads four decimal numbers from 0 to 255 without leading zeros; false, address untouched, for any other
/// text.
TOVINCORE_API bool fromDotted(std::string_view text, in_addr& address) noexcept;

}  // namespace tovin::platform
