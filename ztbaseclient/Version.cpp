#include "ztbaseclient/Version.h"

const char* ztbaseclient::loadedVersion() noexcept { return ZTBASECLIENT_VERSION; }
