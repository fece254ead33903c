#pragma once

#include "tovin/Export.h"

/// Names and texts that this library and the server agree on.
namespace tovin {

TOVIN_API extern const wchar_t* const DRV_DefaultHttpPort;
TOVIN_API extern const wchar_t* const DRV_DefaultSslPort;
/// The HTTPS port of releases 400 to 405.
TOVIN_API extern const wchar_t* const DRV_DefaultSslPort405;
TOVIN_API extern const wchar_t* const DRV_SERVERENDPOINT;
TOVIN_API extern const wchar_t* const DRV_DRVDEVNOHTTP;
TOVIN_API extern const wchar_t* const DRV_KQClientAdminRole;
TOVIN_API extern const wchar_t* const DRV_KQClientLiteRole;
TOVIN_API extern const wchar_t* const DRV_AdminPortalUserRole;
TOVIN_API extern const wchar_t* const DRV_NODE_Generic;
TOVIN_API extern const wchar_t* const DRV_ObjectTransportClassName;
TOVIN_API extern const wchar_t* const DRV_ConsoleEntryBegin;
TOVIN_API extern const wchar_t* const DRV_ConsoleEntryEnd;

}  // namespace tovin
