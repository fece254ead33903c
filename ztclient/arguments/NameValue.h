#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

/// A NAME=VALUE of the command line; without '=' there is no value.
struct NameValue {
  std::string name;
  std::optional<std::string> value;
};

/// Adds an option that may be given again and again, each time with one NAME=VALUE, taken as it is written.
CLI::Option* addNameValues(CLI::App& command, const std::string& option, std::vector<NameValue>& out,
                           const std::string& description);
