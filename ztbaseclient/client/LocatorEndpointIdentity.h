#pragma once

#include "tovin/BaseString.h"
#include "ztbaseclient/Export.h"

/// The two ways to name a server: the end point of its locator service, and what people write, which is a
/// host or host and port.
///
///     HostAndPortToEndPoint(L"atlas", endPoint, 801);    // https://atlas:9943/dravolin/locator
///     EndPointToHostAndPort(endPoint.c_str(), text);     // atlas
///
/// - Schemes are "http://" and "https://", in exactly these letters. Nothing is checked: any text gives one.
/// - Errors: none of their own.
namespace LocatorEndpointIdentity {

ZTBASECLIENT_API extern const wchar_t* const LocatorPath;
ZTBASECLIENT_API extern const char* const LocatorPath8;

/// Scheme, host, port and locator path put together.
ZTBASECLIENT_API void HostAndPortToEndPoint(const wchar_t* host, int port, bool https,
                                            tovin::WideString& out);
ZTBASECLIENT_API void HostAndPortToEndPoint(const char* host, int port, bool https, tovin::NarrowString& out);

/// Completes what is missing: HTTPS, the default port (not behind a scheme), the locator path. A text with
/// any
/// '/' behind its scheme carries its own path; without a scheme it then gets no port either.
/// \param release of the server: those from 400 to 405 have another default port.
ZTBASECLIENT_API void HostAndPortToEndPoint(const wchar_t* hostAndPort, tovin::WideString& out, int release);

/// Drops HTTPS, the locator path and a default port; "http://" stays, so that completing the text again gives
/// HTTP. A text without a scheme stays as it is.
ZTBASECLIENT_API void EndPointToHostAndPort(const wchar_t* endPoint, tovin::WideString& out);

}  // namespace LocatorEndpointIdentity
