#pragma once

#include <map>
#include <string>

#include "ztservice/Service.h"

namespace testsupport {

/// Files that exist in a test only; those of the network are not among them.
using Files = std::map<std::string, std::string>;

/// Loads "main.wsdl" of these files.
ztservice::Service loadFiles(const Files& files, ztservice::Options options = {});

/// Puts "main.wsdl" of these files into one document.
std::string flatten(const Files& files);

/// Definitions around a schema for urn:t, with an operation that takes an element of each given name.
/// \param schema the children of the schema element; the prefixes t, xs, enc and wsdl are declared.
std::string definitionsOf(const std::string& schema, const std::string& attributes = "");

}  // namespace testsupport
