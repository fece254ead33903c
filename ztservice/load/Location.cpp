#include "ztservice/load/Location.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include "tovinCore/platform/Paths.h"

namespace ztservice::parse::location {

namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
bool isLetter(char c) { return lower(c) >= 'a' && lower(c) <= 'z'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string lowered(std::string_view text) {
  std::string out(text);
  std::transform(out.begin(), out.end(), out.begin(), lower);
  return out;
}

int hexValue(char c) {
  if (isDigit(c)) return c - '0';
  const char small = lower(c);
  return small >= 'a' && small <= 'f' ? small - 'a' + 10 : -1;
}

std::string decoded(std::string_view text) {
  std::string out;
  for (size_t at = 0; at < text.size(); ++at) {
    const int high = text[at] == '%' && at + 2 < text.size() ? hexValue(text[at + 1]) : -1;
    const int low = high >= 0 ? hexValue(text[at + 2]) : -1;
    if (low < 0 || (high == 0 && low == 0)) {
      out += text[at];
    } else {
      out += static_cast<char>(high << 4 | low);
      at += 2;
    }
  }
  return out;
}

// Without "." and "..", as far as these can be taken away.
std::string withoutDots(std::string_view path) {
  const bool rooted = path.starts_with('/');
  std::vector<std::string_view> steps;
  std::string_view rest = path;
  bool folder = false;
  while (!rest.empty()) {
    const size_t slash = rest.find('/');
    const std::string_view step = rest.substr(0, slash);
    rest = slash == rest.npos ? std::string_view() : rest.substr(slash + 1);
    folder = slash != path.npos && rest.empty();
    if (step == "." || (step.empty() && !steps.empty())) {
      folder = rest.empty();
    } else if (step == ".." && !steps.empty() && steps.back() != "..") {
      steps.pop_back();
      folder = rest.empty();
    } else if (!(step == ".." && rooted) && !step.empty()) {
      steps.push_back(step);
    }
  }
  std::string out = path.starts_with("//") ? "/" : "";
  if (rooted) out += '/';
  for (size_t i = 0; i < steps.size(); ++i) {
    if (i > 0) out += '/';
    out += steps[i];
  }
  if (folder && !steps.empty()) out += '/';
  return out;
}

bool hasDrive(std::string_view path) { return path.size() >= 2 && isLetter(path[0]) && path[1] == ':'; }

constexpr bool systemHasDrives = std::filesystem::path::preferred_separator == L'\\';

bool isAbsolute(std::string_view path) {
  return path.starts_with('/') || (systemHasDrives && hasDrive(path));
}

// The path in "file:///a/b", "file://localhost/a/b" and "file:a/b".
std::string_view pathOfFileAddress(std::string_view rest) {
  if (rest.starts_with("//")) {
    const std::string_view host = rest.substr(2, rest.find('/', 2) - 2);
    if (host.empty() || lowered(host) == "localhost") rest.remove_prefix(2 + host.size());
  }
  if (systemHasDrives && rest.starts_with('/') && hasDrive(rest.substr(1))) rest.remove_prefix(1);
  return rest;
}

struct Address {
  std::string_view scheme;
  std::string_view authority;
  std::string_view path;
  std::string_view query;  // with its question mark
};

Address parsed(std::string_view text) {
  Address out;
  text = text.substr(0, text.find('#'));
  out.scheme = text.substr(0, text.find(':'));
  text.remove_prefix(std::min(text.size(), out.scheme.size() + 1));
  if (text.starts_with("//")) {
    text.remove_prefix(2);
    out.authority = text.substr(0, text.find_first_of("/?"));
    text.remove_prefix(out.authority.size());
  }
  out.path = text.substr(0, text.find('?'));
  out.query = text.substr(out.path.size());
  return out;
}

}  // namespace

std::string schemeOf(std::string_view location) {
  const size_t colon = location.find(':');
  if (colon == location.npos || colon < 2 || !isLetter(location[0])) return {};
  const std::string_view scheme = location.substr(0, colon);
  const bool plain = std::all_of(scheme.begin(), scheme.end(), [](char c) {
    return isLetter(c) || isDigit(c) || c == '+' || c == '.' || c == '-';
  });
  return plain ? lowered(scheme) : std::string();
}

bool isWeb(std::string_view location) {
  const std::string scheme = schemeOf(location);
  return scheme == "http" || scheme == "https";
}

std::string originOf(std::string_view address) {
  const Address parts = parsed(address);
  const std::string scheme = lowered(parts.scheme);
  std::string host = lowered(parts.authority.substr(parts.authority.rfind('@') + 1));
  const std::string usual = scheme == "https" ? ":443" : ":80";
  if (host.ends_with(usual)) host.resize(host.size() - usual.size());
  return scheme + "://" + host;
}

std::string resolvedAddress(std::string_view from, std::string_view reference) {
  reference = reference.substr(0, reference.find('#'));
  if (!schemeOf(reference).empty()) return std::string(reference);
  const Address base = parsed(from);
  const std::string start = std::string(base.scheme) + ':';
  if (reference.starts_with("//")) return start + std::string(reference);
  const std::string host = start + "//" + std::string(base.authority);
  if (reference.empty()) return host + std::string(base.path) + std::string(base.query);
  if (reference.starts_with('?')) return host + std::string(base.path) + std::string(reference);
  const std::string_view path = reference.substr(0, reference.find('?'));
  const std::string_view query = reference.substr(path.size());
  std::string whole(path);
  if (!path.starts_with('/')) {
    whole = std::string(base.path.substr(0, base.path.rfind('/') + 1)) + whole;
    if (!whole.starts_with('/')) whole.insert(whole.begin(), '/');
  }
  return host + withoutDots(whole) + std::string(query);
}

std::string resolved(std::string_view from, std::string_view reference) {
  std::string plain(reference);
  std::replace(plain.begin(), plain.end(), '\\', '/');
  std::string_view rest = plain;
  const std::string scheme = schemeOf(rest);
  if (scheme == "file") {
    rest = rest.substr(0, rest.find('#'));
    rest = pathOfFileAddress(rest.substr(5));
    if (isWeb(from)) return "file:" + std::string(rest);
  } else if (!scheme.empty() || isWeb(from)) {
    return resolvedAddress(from, rest);
  }
  const std::string path = decoded(rest.substr(0, rest.find('#')));
  if (from.starts_with("well-known:/")) return "well-known:/" + path;
  if (isAbsolute(path)) return withoutDots(path);
  std::string folder(from);
  if (systemHasDrives) std::replace(folder.begin(), folder.end(), '\\', '/');
  folder.resize(folder.rfind('/') + 1);
  return withoutDots(folder + path);
}

std::string shown(const std::string& location) {
  if (!isWeb(location)) return location;
  const size_t begin = location.find("//");
  const size_t end = begin == location.npos ? location.npos : location.find_first_of("/?#", begin + 2);
  const size_t at = begin == location.npos ? location.npos : location.substr(0, end).rfind('@');
  return at == location.npos ? location : location.substr(0, begin + 2) + location.substr(at + 1);
}

std::string identity(const std::string& location) {
  if (!schemeOf(location).empty()) return isWeb(location) ? resolvedAddress(location, "") : location;
  std::error_code ignored;
  const auto whole = std::filesystem::absolute(tovin::platform::pathOf(location), ignored).lexically_normal();
  const std::u8string text = whole.generic_u8string();
  return {text.begin(), text.end()};
}

}  // namespace ztservice::parse::location
