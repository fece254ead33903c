#pragma once

#include <functional>
#include <string_view>

#include "ztservice/Service.h"

/// Who refers to whom in a service.
namespace serviceReferences {

using Visit = std::function<void(const ztservice::Name& type)>;

/// The named types that a type names, those that are written inside it too; a name may come several times.
void ofType(const ztservice::Type& type, const Visit& visit);
/// Those of all parts and headers that go in, come out and fail.
void ofOperation(const ztservice::Service& service, const ztservice::Operation& operation,
                 const Visit& visit);

}  // namespace serviceReferences
