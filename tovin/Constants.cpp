#include "tovin/Constants.h"

namespace tovin {

const wchar_t* const DRV_DefaultHttpPort = L"9944";
const wchar_t* const DRV_DefaultSslPort = L"9943";
const wchar_t* const DRV_DefaultSslPort405 = L"9945";
const wchar_t* const DRV_SERVERENDPOINT = L"ServerEndpoint";
const wchar_t* const DRV_DRVDEVNOHTTP = L"DrvDevNoHttp";
const wchar_t* const DRV_KQClientAdminRole = L"Client/Administrator";
const wchar_t* const DRV_KQClientLiteRole = L"Client/Lite";
const wchar_t* const DRV_AdminPortalUserRole = L"AdminPortal/User";
const wchar_t* const DRV_NODE_Generic = L"Node";
const wchar_t* const DRV_ObjectTransportClassName = L"ObjectTransport";
const wchar_t* const DRV_ConsoleEntryBegin = L"<<<ConsoleEntry";
const wchar_t* const DRV_ConsoleEntryEnd = L"ConsoleEntry>>>";

}  // namespace tovin
