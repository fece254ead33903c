#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tovinCore/Export.h"

/// Files as the operating system has them. Names are UTF-16, or what fileName() makes of the system's own.
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
/// Where the standard input can be read; not to be closed.
TOVINCORE_API intptr_t standardInput() noexcept;
TOVINCORE_API intptr_t standardOutput() noexcept;
/// A new file for reading and writing, for the user alone, that is gone when its handle is closed, even where
/// the program is stopped. -1 when there can be none. \param name out: by what this program can open it as
/// long as the handle is open.
TOVINCORE_API intptr_t createNameless(const std::wstring& folder, std::wstring& name);
/// Whether the call before may succeed the next time; asked before lastFailure().
TOVINCORE_API bool lastFailureMayPass() noexcept;
/// Why the call before failed, in the system's words.
TOVINCORE_API std::wstring lastFailure();
/// Whether both names lead to one file.
TOVINCORE_API bool isSameFile(const wchar_t* a, const wchar_t* b);
/// What tells a file from others at one time; equal ones for names that lead to nothing.
struct FileIdentity {
  uint64_t device = 0;
  uint64_t number = 0;
  bool operator==(const FileIdentity&) const = default;
};
TOVINCORE_API FileIdentity identityOf(const wchar_t* name);
/// Whether there is a file of bytes: no folder, no device, no pipe. Opens nothing, so that it never waits.
TOVINCORE_API bool isRegularFile(const wchar_t* name);

}  // namespace tovin::platform
