#include "ztclient/input/SessionId.h"

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Environment.h"
#include "tovinCore/platform/Paths.h"
#include "ztclient/input/InputFile.h"

std::string sessionId::fromFile(const std::string& file) {
  std::string id = firstLineOf(file);
  bool cutShort = false;
  const std::wstring name = tovin::platform::fileName(file);
  if (id.empty()) throw tovin::Exception(L"The session id is empty").setFile(name);
  if (!tovin::isValidUtf8(id, cutShort)) throw tovin::Exception(L"The session id is not UTF-8").setFile(name);
  return id;
}

std::string sessionId::fromEnvironment() {
  return tovin::wideToUtf8(tovin::platform::environmentVariable("ZTCLIENT_SESSION"));
}
