#include "ztbaseclient/client/CProtocolLinkBuilder.h"

#include "tovinCore/Exception.h"
#include "tovinCore/Guard.h"
#include "tovinCore/Units.h"
#include "tovinCore/WebText.h"
#include "ztbaseclient/tools/ztChecksum.h"

using tovin::guarded;
using tovin::WideString;

namespace {

constexpr const char* ClassName = "CProtocolLinkBuilder";
constexpr size_t longestSafeLink = 2083;

bool hasScheme(const WideString& server) { return tovin::equalFolded(server.view().substr(0, 4), L"http"); }

// Tells the server that the link was made by this library and not typed.
std::wstring markOf(const WideString& protocolId) {
  ztChecksum checksum;
  checksum.AddString(protocolId.c_str());
  return std::wstring(L"___").append(checksum.GetChecksum()).append(L"___");
}

WideString emptyForNull(const wchar_t* text) { return text ? text : L""; }

}  // namespace

CProtocolLinkBuilder::CProtocolLinkBuilder(const wchar_t* serverBase, const wchar_t* protocolId)
    : protocolId_(protocolId), serverBase_(serverBase) {}

CProtocolLinkBuilder::CProtocolLinkBuilder(const CProtocolLinkBuilder&) = default;
CProtocolLinkBuilder& CProtocolLinkBuilder::operator=(const CProtocolLinkBuilder&) = default;
CProtocolLinkBuilder::~CProtocolLinkBuilder() = default;

void CProtocolLinkBuilder::SetParameter(const wchar_t* name, const wchar_t* value) {
  guarded({ClassName, "SetParameter"},
          [&] { parameters_.try_emplace(emptyForNull(name), emptyForNull(value)); });
}

void CProtocolLinkBuilder::SetArrayDelimiter(const wchar_t* delimiter) {
  guarded({ClassName, "SetArrayDelimiter"}, [&] { arrayDelimiter_ = emptyForNull(delimiter); });
}

void CProtocolLinkBuilder::SetProgressMessage(const wchar_t* message) {
  guarded({ClassName, "SetProgressMessage"}, [&] { progressMessage_ = emptyForNull(message); });
}

void CProtocolLinkBuilder::SetRunUser(RunAsUser kind, const wchar_t* sessionId) {
  guarded({ClassName, "SetRunUser"}, [&] {
    kind_ = kind;
    if (kind != RunAsSessionUser) return sessionId_.clear();
    if (!sessionId) {
      throw tovin::Exception(L"A session ID must be registered to run as the protocol link creator");
    }
    sessionId_ = sessionId;
  });
}

void CProtocolLinkBuilder::append(const wchar_t* fixed, const WideString& value) {
  link_ += fixed;
  tovin::util::urlEncode(value.view(), link_);
}

void CProtocolLinkBuilder::construct() {
  // Only a base without a scheme begins the link anew: behind any other a second link is appended.
  if (!hasScheme(serverBase_)) link_ = L"http://";
  link_.append(serverBase_.view()).append(L"/perlbin/runjob.pl?");
  if (protocolId_.isEmpty()) throw tovin::Exception(L"No protocol identifier specified");
  link_ += L"_protocol=";
  if (kind_ == RunAsAnonymous) link_ += markOf(protocolId_);
  append(L"", protocolId_);
  if (kind_ == RunAsAnonymous) link_ += L"&_anonymous=true";
  if (!progressMessage_.isEmpty()) append(L"&_progressmessage=", progressMessage_);
  if (!arrayDelimiter_.isEmpty()) append(L"&_arraydelim=", arrayDelimiter_);
  for (const auto& [name, value] : parameters_) {
    append(L"&", name);
    append(L"=", value);
  }
  if (kind_ == RunAsSessionUser) append(L"&_session=", sessionId_);
}

const wchar_t* CProtocolLinkBuilder::Construct() {
  return guarded({ClassName, "Construct"}, [&] {
    construct();
    if (tovin::countUnits(link_) > longestSafeLink) {
      tovin::Exception::warn(
          L"The length of the generated protocol link exceeds 2083 characters, and so may not work in "
          L"Internet "
          L"Explorer.");
    }
    return link_.c_str();
  });
}
