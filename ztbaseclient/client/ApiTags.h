#pragma once

#include "ztbaseclient/Export.h"

/// Tags of the client interfaces through which a protocol may be published.

ZTBASECLIENT_API extern const wchar_t* const APITag_SOAP3;
ZTBASECLIENT_API extern const wchar_t* const APITag_SOAP4;
ZTBASECLIENT_API extern const wchar_t* const APITag_Java;
ZTBASECLIENT_API extern const wchar_t* const APITag_DotNet;
ZTBASECLIENT_API extern const wchar_t* const APITag_JavaScript;
ZTBASECLIENT_API extern const wchar_t* const APITag_C;
ZTBASECLIENT_API extern const wchar_t* const APITag_ProtocolService;
