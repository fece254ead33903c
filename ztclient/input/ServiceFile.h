#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "ztservice/Service.h"

/// Where the documents of a whole service come from, as the command line says it.
struct ServiceSources {
  ztservice::Options options;
  /// The options that were added, for what they go with.
  std::vector<CLI::Option*> added;
};

/// Adds the options for them. The sources outlive the parser.
void addServiceSources(CLI::App& command, ServiceSources& sources);

/// Reads what the command was given: an address is fetched, anything else is read once and in order, so that
/// standard input and pipes are taken.
/// Errors: those of ztservice::load(); a file that cannot be read, or is larger than the limit.
ztservice::Service loadService(const std::string& file, const ServiceSources& sources);
/// The same in one document, as ztservice::flatten() makes it.
std::string flattenService(const std::string& file, const ServiceSources& sources);
