#pragma once

#include <CLI/CLI.hpp>
#include <string>

/// The help of a command, wrapped to the width that people have.
class HelpText : public CLI::FormatterBase {
 public:
  std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override;
};

/// What the manual and the help tell of an option alike.
namespace describe {

/// "FILE"; empty for a flag.
std::string valueName(const CLI::Option& option);
/// "-q, --quiet", "--tolerance N"; the name of an argument.
std::string term(const CLI::Option& option);
/// The help with what is required and the default behind it: "…  [default: 5]".
std::string text(const CLI::Option& option);
/// "[OPTION]... FILE1 FILE2", "COMMAND".
std::string usage(const CLI::App& command);

}  // namespace describe
