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

/// A number as the parser takes it: without zeros in front, which would make it an octal one. Errors: an
/// empty text, and more than 63 bits, of which the parser would keep the nearest.
std::string checkedNumber(std::string number);

/// An option, or a list of them, whose value is a number: decimal, or hexadecimal with 0x.
template <class Value>
CLI::Option* addNumber(CLI::App& app, const std::string& name, Value& value, const std::string& help) {
  return app.add_option(name, value, help)->transform(checkedNumber);
}

}  // namespace arguments
