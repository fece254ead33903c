#include "ztservice/Error.h"

#include <ostream>

#include "tovinCore/Utf8.h"

namespace ztservice {

std::string Warning::toString() const {
  std::string out = place.file;
  if (place.line > 0) out += ':' + std::to_string(place.line) + ':' + std::to_string(place.column);
  return out.empty() ? text : out + ": " + text;
}

std::ostream& operator<<(std::ostream& out, const Warning& warning) { return out << warning.toString(); }

Error::Error(const Place& place, std::string_view text)
    : Exception(tovin::utf8ToWide(std::string(text)).c_str()) {
  setFile(tovin::utf8ToWide(place.file));
  if (place.line > 0) setPlace(static_cast<int64_t>(place.line), static_cast<int64_t>(place.column));
}

Error::~Error() = default;

}  // namespace ztservice
