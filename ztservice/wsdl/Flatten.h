#pragma once

#include <string>

#include "ztservice/Export.h"
#include "ztservice/load/Options.h"

namespace ztservice {

/// A service and all it needs in one document, UTF-8: the schemas that it refers to stand in its types, and
/// what other definitions have stands behind its own. What the documents say, comments too, is kept, with its
/// prefixes.
///
/// Two things get other names, none of which goes over the wire. One document has one target namespace, that
/// of the first: messages, port types, bindings and services of other namespaces come into it, with a number
/// behind a name that is taken. And what a redefinition replaces has one, as it can be named no more by its
/// own name. Errors: those of load().
ZTSERVICE_API std::string flatten(const std::string& location, const Options& options = {});
/// The same of a document that is in memory, as in loadText().
ZTSERVICE_API std::string flattenText(const std::string& bytes, const std::string& location,
                                      const Options& options = {});

}  // namespace ztservice
