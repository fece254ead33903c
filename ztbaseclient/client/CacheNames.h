#pragma once

#include "ztbaseclient/Export.h"

/// Names of a cache request's arguments and the verbs of its messages, as clients send them.

ZTBASECLIENT_API extern const char* const pszUser;
ZTBASECLIENT_API extern const char* const pszJobID;
ZTBASECLIENT_API extern const char* const pszCacheID;
ZTBASECLIENT_API extern const char* const pszRecNum;
ZTBASECLIENT_API extern const char* const pszNodeVector;
ZTBASECLIENT_API extern const char* const pszPropertyName;
ZTBASECLIENT_API extern const char* const pszComponentAttr;
ZTBASECLIENT_API extern const char* const pszDisplayAttr;

ZTBASECLIENT_API extern const wchar_t* const s_Message_Init;
ZTBASECLIENT_API extern const wchar_t* const s_Message_Delete;
ZTBASECLIENT_API extern const wchar_t* const s_Message_Locate;
ZTBASECLIENT_API extern const wchar_t* const s_Message_Save;
ZTBASECLIENT_API extern const wchar_t* const s_Message_Save_DisplayAttr;
ZTBASECLIENT_API extern const wchar_t* const s_Message_Save_State;
ZTBASECLIENT_API extern const wchar_t* const s_Message_Reset_DisplayAttr;
