#pragma once

#include <string>

#include "tovinCore/Export.h"

namespace tovin::platform {

/// Writes UTF-8 text and a line end to standard error, in one piece; failures are ignored.
TOVINCORE_API void printErrorLine(const std::string& text) noexcept;

}  // namespace tovin::platform
