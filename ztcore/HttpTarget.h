#pragma once

#include <string>

// Where a request goes: a URL without credentials, and those that it was given with.
struct HttpTarget {
  // Raises "Malformed URL %ls: %hs"; only HTTP and HTTPS are taken. Null counts as empty.
  static HttpTarget parse(const wchar_t* url);

  // Scheme, host and port.
  std::string origin() const { return url.substr(0, url.find('/', url.find("//") + 2)); }
  bool isSecure() const { return url.starts_with("https:"); }

  std::string url;
  std::string user;
  std::string password;
};
