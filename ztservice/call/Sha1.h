#pragma once

#include <string>
#include <string_view>

namespace ztservice::call {

// The 20 bytes of a text's digest (FIPS 180-4), which WS-Security asks for.
std::string sha1(std::string_view text);

}  // namespace ztservice::call
