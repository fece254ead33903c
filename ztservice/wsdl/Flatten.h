#pragma once

#include <string>

#include "ztservice/Export.h"
#include "ztservice/load/Options.h"

namespace ztservice {

/// A service and all it needs in one document, UTF-8: the schemas that it refers to stand in its types, and
/// what other definitions have stands behind its own. What the documents say, comments too, is kept, with its
/// prefixes.
///
/// Two things have no place in one document of WSDL 1.1, and are refused: definitions of several target
/// namespaces, and redefinitions, which name the component that they replace by its own name.
/// Errors: Error for these, and those of load().
ZTSERVICE_API std::string flatten(const std::string& location, const Options& options = {});
/// The same of a document that is in memory, as in loadText().
ZTSERVICE_API std::string flattenText(const std::string& bytes, const std::string& location,
                                      const Options& options = {});

}  // namespace ztservice
