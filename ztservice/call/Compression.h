#pragma once

#include <string>
#include <string_view>

namespace ztservice::call {

// A body as gzip (RFC 1952).
std::string compressed(std::string_view bytes);

}  // namespace ztservice::call
