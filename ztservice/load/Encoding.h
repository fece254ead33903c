#pragma once

#include <expat.h>

namespace ztservice::parse {

// Fills in what expat does not know: the code pages 1250 to 1252, ISO-8859-2, -5, -7, -9 and -15, and UTF-8
// by its other name. False for any other encoding.
bool fillEncoding(const char* name, XML_Encoding& encoding);

}  // namespace ztservice::parse
