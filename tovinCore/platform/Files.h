#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tovinCore/Export.h"

/// Files as the operating system has them. Names are UTF-16.
namespace tovin::platform {

/// `readRegular` opens files of bytes only, no device and no pipe, and never waits; `probe` opens an existing
/// file for writing and leaves it as it is; `create` makes a new file for the user alone, as far as its
/// folder does not say who may read it, and none where there is one.
enum class OpenMode { read, readRegular, write, append, probe, create };

/// A handle, -1 when the file cannot be had; a folder never can.
TOVINCORE_API intptr_t openFile(const wchar_t* name, OpenMode mode);
TOVINCORE_API void closeFile(intptr_t handle) noexcept;
/// The count, 0 at the end, -1 for a failure; it may be less than asked for.
TOVINCORE_API int64_t readFile(intptr_t handle, void* bytes, size_t count) noexcept;
TOVINCORE_API int64_t writeFile(intptr_t handle, const void* bytes, size_t count) noexcept;
TOVINCORE_API bool seekFile(intptr_t handle, int64_t position) noexcept;
/// -1 for a failure.
TOVINCORE_API int64_t fileLength(intptr_t handle) noexcept;
/// The computer and folder that a file name leads to over the network ("\\\\computer\\folder"); empty for a
/// name on this computer.
TOVINCORE_API std::wstring networkShareOf(std::wstring_view name);

}  // namespace tovin::platform
