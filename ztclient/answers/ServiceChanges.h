#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "ztservice/Service.h"

/// One thing that a newer version of a service has otherwise.
struct ServiceChange {
  enum class Kind { added, removed, changed };

  /// "port OrderPort, operation place, input", "type {urn:orders}Order".
  std::string where;
  Kind kind;
  /// "member comment, required", "value RED".
  std::string what;
  /// Whether who calls the older version can no longer call the newer one as before.
  bool breaks;
};

/// What a newer version of a service has otherwise, by operations, then elements, then types that both need.
std::vector<ServiceChange> changesOf(const ztservice::Service& older, const ztservice::Service& newer);

/// {"breaks": B, "changes": [{"where": T, "change": "added"|"removed"|"changed", "what": T, "breaks": B}]}
void writeChangesJson(const std::vector<ServiceChange>& changes, std::ostream& out);
/// A line each: "breaks callers: type {urn:orders}Order: added member comment, required".
void writeChangesText(const std::vector<ServiceChange>& changes, std::ostream& out);
