#pragma once

#include <string_view>

#include "tovinCore/Export.h"

/// Small files that are read and replaced as a whole. Names are UTF-16.
namespace tovin::platform {

/// Anything of that name, a folder too, whether it may be read or not.
TOVINCORE_API bool pathExists(const wchar_t* name);

/// Puts the bytes in the place of a file in one step, so that nobody ever meets half of them; makes the
/// folder it lies in. A link stays one, and what it leads to is replaced. False when that fails: the file is
/// then as it was.
TOVINCORE_API bool replaceFile(const wchar_t* name, std::string_view bytes);

/// The same for a file that a user names: no folder is made, a new file has the permissions that new files
/// have, and what is no file of bytes (a device, a pipe) is written as it is. The reason of a failure is
/// lastFailure().
TOVINCORE_API bool placeFile(const wchar_t* name, std::string_view bytes);

}  // namespace tovin::platform
