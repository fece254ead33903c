#pragma once

#include <ostream>

#include "ztservice/Service.h"

/// Operations and types and how they hang together, for Graphviz: an arrow leads from what uses a type to it.
void writeServiceDot(const ztservice::Service& service, std::ostream& out);
