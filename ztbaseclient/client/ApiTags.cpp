#include "ztbaseclient/client/ApiTags.h"

const wchar_t* const APITag_SOAP3 = L"{kq3}";
const wchar_t* const APITag_SOAP4 = L"{kq4}";
const wchar_t* const APITag_Java = L"{jalkq}";
const wchar_t* const APITag_DotNet = L"{nalkq}";
const wchar_t* const APITag_JavaScript = L"{jsalkq}";
const wchar_t* const APITag_C = L"{calkq}";
const wchar_t* const APITag_ProtocolService = L"{psv}";
