#pragma once

#include <string>
#include <vector>

/// What the command is given, on its way through the parser of command lines.
namespace arguments {

/// The arguments behind the program's name as the parser takes them, the last one first. `--name=` becomes an
/// empty text, which the parser knows only as an argument of its own.
/// Errors: "Argument %d is not UTF-8".
std::vector<std::string> forParser(std::vector<std::string> given);

/// A text out of a list of texts, as it was given.
std::string fromList(std::string parsed);

}  // namespace arguments
