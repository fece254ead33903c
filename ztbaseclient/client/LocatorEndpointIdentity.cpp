#include "ztbaseclient/client/LocatorEndpointIdentity.h"

#include <utility>

#include "tovin/Constants.h"
#include "tovinCore/Guard.h"
#include "tovinCore/Numbers.h"

using tovin::guarded;
using tovin::WideString;

namespace LocatorEndpointIdentity {

const wchar_t* const LocatorPath = L"/dravolin/locator";
const char* const LocatorPath8 = "/dravolin/locator";

namespace {

constexpr const char* ClassName = "LocatorEndpointIdentity";
constexpr const char* Completing = "HostAndPortToEndPoint";
constexpr const char* Reducing = "EndPointToHostAndPort";

constexpr std::wstring_view http = L"http://";
constexpr std::wstring_view https = L"https://";

std::wstring_view viewOf(const wchar_t* text) { return text ? std::wstring_view(text) : std::wstring_view(); }

bool contains(std::wstring_view text, wchar_t c) { return text.find(c) != std::wstring_view::npos; }

std::wstring_view schemeOf(std::wstring_view text) {
  for (std::wstring_view scheme : {http, https}) {
    if (text.starts_with(scheme)) return scheme;
  }
  return {};
}

const wchar_t* defaultPort(int release) {
  return release >= 400 && release <= 405 ? tovin::DRV_DefaultSslPort405 : tovin::DRV_DefaultSslPort;
}

std::wstring complete(std::wstring_view text, int release) {
  std::wstring endPoint(text);
  const std::wstring_view scheme = schemeOf(text);
  if (scheme.empty()) {
    endPoint.insert(0, https);
    if (!contains(text, L':') && !contains(text, L'/')) endPoint.append(L":").append(defaultPort(release));
  }
  if (!contains(text.substr(scheme.size()), L'/')) endPoint += LocatorPath;
  return endPoint;
}

// What stands at the very front is the host, whatever it looks like.
bool isBehindFront(size_t position) { return position != std::wstring_view::npos && position > 0; }

std::wstring_view withoutDefaultPort(std::wstring_view text) {
  const size_t colon = text.find(L':');
  if (!isBehindFront(colon)) return text;
  const std::wstring_view port = text.substr(colon + 1);
  const bool isDefault = port == tovin::DRV_DefaultHttpPort || port == tovin::DRV_DefaultSslPort;
  return isDefault ? text.substr(0, colon) : text;
}

std::wstring reduce(std::wstring_view endPoint, std::wstring_view scheme) {
  std::wstring_view text = endPoint.substr(scheme.size());
  const size_t path = text.find(LocatorPath);
  if (isBehindFront(path)) text = text.substr(0, path);
  return std::wstring(scheme == http ? http : std::wstring_view()).append(withoutDefaultPort(text));
}

}  // namespace

void HostAndPortToEndPoint(const wchar_t* host, int port, bool secure, WideString& out) {
  guarded({ClassName, Completing}, [&] {
    std::wstring endPoint(secure ? https : http);
    endPoint.append(viewOf(host)).append(L":").append(tovin::util::integerToString(port)).append(LocatorPath);
    out = endPoint;
  });
}

void HostAndPortToEndPoint(const char* host, int port, bool secure, tovin::NarrowString& out) {
  guarded({ClassName, Completing}, [&] {
    std::string endPoint(secure ? "https://" : "http://");
    endPoint.append(host ? host : "").append(":").append(std::to_string(port)).append(LocatorPath8);
    out = endPoint;
  });
}

void HostAndPortToEndPoint(const wchar_t* hostAndPort, WideString& out, int release) {
  guarded({ClassName, Completing}, [&] { out = complete(viewOf(hostAndPort), release); });
}

void EndPointToHostAndPort(const wchar_t* endPoint, WideString& out) {
  guarded({ClassName, Reducing}, [&] {
    const std::wstring_view scheme = schemeOf(viewOf(endPoint));
    if (scheme.empty())
      out = WideString(endPoint);
    else
      out = reduce(endPoint, scheme);
  });
}

}  // namespace LocatorEndpointIdentity
