#pragma once

#include <string_view>

#include "ztservice/call/Security.h"
#include "ztservice/call/XmlText.h"

namespace ztservice::call {

// Writes the header of a user. \param space of the envelope that it stands in.
void writeSecurity(XmlText& xml, const Security& security, std::string_view space);

}  // namespace ztservice::call
