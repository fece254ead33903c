#pragma once

#include <CLI/CLI.hpp>
#include <string>

/// What is wrong with a command line, for whoever typed it: a command or an option that there is none of is
/// named, with the one that was probably meant.
///
///     no command "quary"; did you mean "query"?
///
/// \param app after the parse that failed. \param error what is said of any other fault.
std::string explain(const CLI::App& app, const std::exception& error);

/// "no command \"quary\"; did you mean \"query\"?"
std::string noCommand(const std::string& word, const std::vector<std::string>& words);
