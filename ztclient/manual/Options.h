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

/// One option or argument of a command, as the shells complete it.
struct CompletionRow {
  enum Kind { flag, words_, file, other };

  std::string path;
  std::string name;  // "--as"; empty for an argument
  std::string shortName;
  std::string description;  // of an argument its name
  Kind kind;
  /// Those that end in '=' or ':' are begun with, and go on without a blank.
  std::vector<std::string> words;
  bool repeated;
};

/// What all shells are told: the options of each command, then its arguments in their order.
std::vector<CompletionRow> completionTable(const CLI::App& app);
