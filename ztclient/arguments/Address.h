#pragma once

#include <string>
#include <vector>

/// What is strange about a server's address, for people who mistyped one.
namespace address {

/// "no host in ...", "port abc is no number", "scheme ftp is neither http nor https", "a blank is in the host
/// a b"; none for an address that a client can reach. Takes host, host:port and URLs.
std::vector<std::string> doubts(const std::string& text);
/// Whether it is a URL of HTTP or HTTPS with nothing strange about it.
bool isWebAddress(const std::string& text);
/// Scheme, host and port of a URL as they are written, in small letters.
std::string originOf(const std::string& url);

}  // namespace address
