#include "tovinCore/platform/Console.h"

#include <cstdio>

namespace tovin::platform {

void printErrorLine(const std::string& text) noexcept { std::fprintf(stderr, "%s\n", text.c_str()); }

}  // namespace tovin::platform
