#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

/// The commands below a command, in the order in which they were added.
std::vector<const CLI::App*> commandsOf(const CLI::App& app);
/// Calls visit(command, path) for the command itself and all below it; the path is "", "credentials make", …
void forCommands(const CLI::App& app,
                 const std::function<void(const CLI::App& command, const std::string& path)>& visit);
/// "--json"; empty for what has no long name.
std::string longName(const CLI::Option& option);
bool takesValue(const CLI::Option& option);
/// The values that an option is restricted to; empty for any.
std::vector<std::string> choicesOf(const CLI::Option& option);
