#pragma once

#include <string>

#include "ztservice/Service.h"

/// A whole service as a manual: its ports and operations with what goes in and comes out and an example of
/// it, and all types with links both ways.
std::string servicePage(const ztservice::Service& service, const std::string& name);
