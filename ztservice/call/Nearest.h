#pragma once

#include <string>
#include <vector>

#include "ztservice/Export.h"

namespace ztservice::call {

/// Of several words the one nearest to a mistyped one; empty when none is near.
ZTSERVICE_API std::string nearest(const std::string& word, const std::vector<std::string>& words);

/// "; did you mean \"WORD\"?", empty when none is near.
ZTSERVICE_API std::string suggestion(const std::string& word, const std::vector<std::string>& words);

}  // namespace ztservice::call
