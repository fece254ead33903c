#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ztservice::parse {

// The catalogue of well-known schemas, which lies in the library with what it names; the folder catalog/ has
// the sources.
inline constexpr std::string_view wellKnownCatalog = "well-known:/catalog.xml";

// The bytes of one of these documents; none for any other location.
std::optional<std::string_view> wellKnown(std::string_view location);

}  // namespace ztservice::parse
