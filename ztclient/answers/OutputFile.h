#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Files that the command writes for its user.
namespace outputFile {

/// Puts a whole file in its place in one step; "-" is standard output. Errors: "Unable to write file %ls"
/// with the system's reason.
void place(const std::string& file, std::string_view bytes);

/// Refuses an `option` whose file is one of those that are read.
void requireAnother(const char* option, const std::string& file, const std::vector<std::string>& read);

}  // namespace outputFile
