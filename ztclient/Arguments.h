#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

/// What the command is given, on its way through the parser of command lines.
namespace arguments {

/// The arguments behind the program's name as the parser of `app` takes them, the last one first. `--name=`
/// becomes an empty text, which the parser knows only as an argument of its own. The expression of a query
/// may begin with '-': what is no option's name goes to the end, behind a "--". Errors: "Argument %d is not
/// UTF-8".
std::vector<std::string> forParser(const CLI::App& app, std::vector<std::string> given);

/// A text out of a list of texts, as it was given.
std::string fromList(std::string parsed);

}  // namespace arguments
