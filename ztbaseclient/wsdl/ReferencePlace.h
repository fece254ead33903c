// Where in a document a reference to a schema stands, looked for only when it fails: nodes keep no places.
#pragma once

#include <cstdint>
#include <string>

#include "tovin/Array.h"
#include "tovin/BaseString.h"

struct ReferencePlace {
  int64_t line = 0;  // 0 where the reference was not found
  int64_t column = 0;

  // ":3:5", or nothing.
  std::wstring text() const;
};

// The first include or import with this location, which has one character a byte.
ReferencePlace findReference(const tovin::Array<unsigned char>& document, const tovin::WideString& location);
ReferencePlace findReference(const tovin::WideString& file, const tovin::WideString& location);
