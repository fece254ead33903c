#include "ztservice/load/Catalog.h"

namespace ztservice::parse {

void Catalog::add(const std::string&) {}
std::optional<std::string> Catalog::find(const std::string&) const { return {}; }

}  // namespace ztservice::parse
