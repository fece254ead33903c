#pragma once

#include "tovin/BaseString.h"
#include "ztbaseclient/Export.h"

/// Where the server is.
///
///     WideString endPoint;
///     ztSoapUtils::GetServerEndpointSetting(endPoint);  // the saved one, else the default
class ZTBASECLIENT_API ztSoapUtils {
 public:
  /// The locator on this computer, over HTTPS.
  static const wchar_t* GetDefaultLocatorEndpoint() noexcept;

  /// Fills an empty end point with the one in the user's settings, else with the default one.
  /// \return false for the default, whatever stood in the way of the saved one.
  static bool GetServerEndpointSetting(tovin::WideString& endPoint);

  /// Whether plain HTTP may be used. The server configuration's "DrvDevNoHttp" forbids it towards this very
  /// computer, by its loopback name or its own.
  /// \param endPoint UTF-8; null or empty for the one of the settings.
  static bool UseHttp(const char* endPoint) noexcept;
};
