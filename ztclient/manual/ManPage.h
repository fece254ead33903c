#pragma once

#include <CLI/CLI.hpp>
#include <ostream>
#include <string>

// Documents that follow from the options of the command, so that they are never older than these.

/// The manual page, in the man macros. \param date of the last release.
void writeManPage(std::ostream& out, const CLI::App& app, const std::string& date);
/// What the shells complete the command line with.
void writeBashCompletion(std::ostream& out, const CLI::App& app);
void writeZshCompletion(std::ostream& out, const CLI::App& app);
void writeFishCompletion(std::ostream& out, const CLI::App& app);
