#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

#include "tovinCore/Exception.h"
#include "ztservice/Export.h"

namespace ztservice {

/// Where something stands. Line and column count from 1, the column in bytes; both are 0 for a whole file.
struct Place {
  std::string file;
  uint64_t line = 0;
  uint64_t column = 0;
};

/// A finding that is no failure: "orders.wsdl:3:5: types.xsd: No such file or directory".
struct Warning {
  Place place;
  std::string text;

  /// "FILE[:LINE:COLUMN]: TEXT".
  ZTSERVICE_API std::string toString() const;
};

ZTSERVICE_API std::ostream& operator<<(std::ostream& out, const Warning& warning);

/// A service that cannot be had at all: its document cannot be read, or is no WSDL 1.1. The message is the
/// reason; file, line and column stand beside it.
class ZTSERVICE_API Error : public tovin::Exception {
 public:
  /// \param text UTF-8.
  Error(const Place& place, std::string_view text);
  ~Error() override;
};

}  // namespace ztservice
