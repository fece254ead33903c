#pragma once

#include <string>
#include <string_view>

#include "tovin/SecretString.h"

// Where a request goes: a URL without credentials, and those that it was given with.
struct HttpTarget {
  // Raises "Malformed URL %ls: %hs"; only HTTP and HTTPS are taken. Null counts as empty.
  static HttpTarget parse(const wchar_t* url);

  // Scheme, host and port.
  std::string origin() const { return url.substr(0, url.find('/', url.find("//") + 2)); }
  bool isSecure() const { return url.starts_with("https:"); }
  bool hasCredentials() const { return !user.text().isEmpty() || !password.text().isEmpty(); }

  std::string url;
  tovin::SecretString<char> user;
  tovin::SecretString<char> password;
};

// A text that may have a URL in it, for a message: all that may be a user and a password is taken out of it,
// rather too much than too little.
std::wstring withoutUserInfo(std::wstring_view text);
