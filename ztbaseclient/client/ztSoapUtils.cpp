#include "ztbaseclient/client/ztSoapUtils.h"

#include <algorithm>

#include "tovin/Constants.h"
#include "tovinCore/Numbers.h"
#include "tovinCore/Units.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Environment.h"
#include "ztcore/ztRegistry.h"
#include "ztcore/ztServerConfig.h"

using tovin::WideString;

namespace {

constexpr const wchar_t* loopbackName = L"localhost";
constexpr const wchar_t* settingsRoot = L"Software\\DraVolin\\Corvanta_";
constexpr const wchar_t* release = L"8.0.1.500";

// Each release has settings of its own, all builds of it the same.
std::wstring settingsKey() {
  std::wstring key = std::wstring(settingsRoot) + release;
  std::replace(key.begin(), key.end(), L'.', L'_');
  return key.substr(0, key.rfind(L'_'));
}

WideString readSavedEndPoint() {
  ztRegistry registry;
  WideString saved;
  if (registry.Connect(ztRegistry::CurrentUser) && registry.Open(settingsKey().c_str())) {
    registry.GetValue(tovin::DRV_SERVERENDPOINT, saved);
  }
  return saved;
}

WideString savedEndPoint() noexcept {
  try {
    return readSavedEndPoint();
  } catch (...) {
    return {};  // settings that cannot be read are none
  }
}

bool isHttpForbiddenHere() {
  try {
    WideString value;
    return ztServerConfig::GetParameter(tovin::DRV_DRVDEVNOHTTP, value) &&
           tovin::util::stringToBoolean(value.view());
  } catch (...) {
    return false;  // a configuration that cannot be read sets nothing
  }
}

bool contains(std::wstring_view text, std::wstring_view part) {
  return !part.empty() && text.find(part) != std::wstring_view::npos;
}

bool isHttpToAnotherComputer(std::wstring_view endPoint) {
  return tovin::equalFolded(endPoint.substr(0, 4), L"http") && !contains(endPoint, loopbackName) &&
         !contains(endPoint, tovin::platform::computerName());
}

}  // namespace

const wchar_t* ztSoapUtils::GetDefaultLocatorEndpoint() noexcept {
  return L"https://localhost:9943/dravolin/locator";
}

bool ztSoapUtils::GetServerEndpointSetting(WideString& endPoint) {
  if (!endPoint.isEmpty()) return true;
  endPoint = savedEndPoint();
  if (!endPoint.isEmpty()) return true;
  endPoint = GetDefaultLocatorEndpoint();
  return false;
}

bool ztSoapUtils::UseHttp(const char* endPoint) noexcept {
  try {
    if (!isHttpForbiddenHere()) return true;
    WideString wide(tovin::utf8ToWide(endPoint ? endPoint : ""));
    GetServerEndpointSetting(wide);
    return isHttpToAnotherComputer(wide.view());
  } catch (...) {
    return false;  // no memory: the safe answer
  }
}
