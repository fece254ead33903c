#pragma once

#include <iosfwd>

#include "ztservice/Service.h"

/// A whole service as one indented JSON document; docs/command.md has its layout.
void writeServiceJson(const ztservice::Service& service, std::ostream& out);
