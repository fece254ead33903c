#include "ztbaseclient/client/CacheNames.h"

const char* const pszUser = "user";
const char* const pszJobID = "jobid";
const char* const pszCacheID = "cacheid";
const char* const pszRecNum = "recnum";
const char* const pszNodeVector = "node";
const char* const pszPropertyName = "prop";
const char* const pszComponentAttr = "compattr";
const char* const pszDisplayAttr = "displayattr";

const wchar_t* const s_Message_Init = L"initcache";
const wchar_t* const s_Message_Delete = L"removedatawatch";
const wchar_t* const s_Message_Locate = L"lcatenode";  // clients send it without the first o
const wchar_t* const s_Message_Save = L"save";
const wchar_t* const s_Message_Save_DisplayAttr = L"displayattr";
const wchar_t* const s_Message_Save_State = L"state";
const wchar_t* const s_Message_Reset_DisplayAttr = L"resetDisplayAttr";
