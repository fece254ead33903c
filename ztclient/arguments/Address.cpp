#include "ztclient/arguments/Address.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace {

struct Parts {
  std::string scheme;
  std::string host;
  std::optional<std::string> port;
};

Parts split(const std::string& text) {
  Parts parts;
  const size_t mark = text.find("://");
  const bool hasScheme = mark != std::string::npos && text.find_first_of("/?#") == mark + 1;
  if (hasScheme) parts.scheme = text.substr(0, mark);
  std::string place = hasScheme ? text.substr(mark + 3) : text;
  place = place.substr(0, place.find_first_of("/?#"));
  place.erase(0, place.rfind('@') + 1);
  const size_t bracket = place.starts_with('[') ? place.find(']') : std::string::npos;
  const size_t colon = place.find(':', bracket == std::string::npos ? 0 : bracket);
  parts.host = place.substr(0, colon);
  if (colon != std::string::npos) parts.port = place.substr(colon + 1);
  return parts;
}

bool isPort(const std::string& text) {
  unsigned number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() && number > 0 && number <= 65535;
}

std::string lowered(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; });
  return text;
}

bool isWebScheme(const std::string& scheme) {
  const std::string name = lowered(scheme);
  return name == "http" || name == "https";
}

bool isNumber(const std::string& text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

std::vector<std::string> address::doubts(const std::string& text) {
  std::vector<std::string> found;
  const Parts parts = split(text);
  if (!parts.scheme.empty() && !isWebScheme(parts.scheme))
    found.push_back("scheme " + parts.scheme + " is neither http nor https");
  if (parts.host.empty()) found.push_back("no host in \"" + text + '"');
  if (parts.host.find(' ') != std::string::npos)
    found.push_back("a blank is in the host \"" + parts.host + '"');
  if (parts.port && !isPort(*parts.port))
    found.push_back("port " + *parts.port +
                    (isNumber(*parts.port) ? " is not in 1 to 65535" : " is no number"));
  return found;
}

bool address::isWebAddress(const std::string& text) {
  return isWebScheme(split(text).scheme) && doubts(text).empty();
}

std::string address::originOf(const std::string& url) {
  const Parts parts = split(url);
  std::string origin = parts.scheme + "://" + parts.host + (parts.port ? ':' + *parts.port : "");
  return lowered(std::move(origin));
}
