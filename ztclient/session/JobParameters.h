#pragma once

#include "tovin/Ptr.h"
#include "tovin/iNode.h"
#include "ztclient/answers/Json.h"

/// What an operation wants to be told, taken from the description of a service that wsdlToJson() gives.
namespace jobs {

/// The operation that takes the most; null when there is none.
Json operationWithMostMembers(const Json& service);

/// A job for an operation: the node "job" with a child for each part, and there a property for each member,
/// of the type that the service wants and with a value that serves as an example.
tovin::Ptr<tovin::iNode> treeFor(const Json& operation);

}  // namespace jobs
