#pragma once

#include <string>
#include <string_view>

// Where documents lie: paths of files, and addresses. Both are UTF-8.
namespace ztservice::parse::location {

// The scheme in lower case, without its colon; empty for a path. One letter is a drive.
std::string schemeOf(std::string_view location);
// Whether it is an address of HTTP or HTTPS.
bool isWeb(std::string_view location);
// Scheme, host and port of an address, in lower case: "https://example.com:8443".
std::string originOf(std::string_view address);

// A reference as `from` writes it, from where it leads to. Paths: escapes are decoded, a backslash is a
// slash, "file:" is taken off, and a fragment is left out.
std::string resolved(std::string_view from, std::string_view reference);
// An address against another one, as RFC 3986 has it, without a fragment.
std::string resolvedAddress(std::string_view from, std::string_view reference);

// For people: an address without user and password, a path as it is.
std::string shown(const std::string& location);

// Alike for two names of one document.
std::string identity(const std::string& location);

}  // namespace ztservice::parse::location
