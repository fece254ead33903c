#pragma once

#include <map>
#include <string>

#include "tovin/BaseString.h"
#include "ztbaseclient/Export.h"

/// Builds the link that runs a published protocol on the server. Sends nothing.
///
///     CProtocolLinkBuilder builder(L"atlas:9944", L"Find Similar");
///     builder.SetParameter(L"limit", L"10");
///     open(builder.Construct());
///     // http://atlas:9944/perlbin/runjob.pl?_protocol=Find%20Similar&limit=10
///
/// - Shape: names and values are percent-encoded, the server base is not; parameters stand in the order of
///   their names' UTF-16 units. Null counts as empty.
/// - One link a builder: behind a server base with a scheme a second Construct appends another link.
/// - Errors: "No protocol identifier specified", "A session ID must be registered to run as the protocol link
///   creator". A link of more than 2083 characters is a warning.
class ZTBASECLIENT_API CProtocolLinkBuilder {
 public:
  enum RunAsUser { RunAsSessionUser = 1, RunAsDefaultUser = 2, RunAsAnonymous = 3 };

  CProtocolLinkBuilder(const wchar_t* serverBase, const wchar_t* protocolId);
  CProtocolLinkBuilder(const CProtocolLinkBuilder& other);
  CProtocolLinkBuilder& operator=(const CProtocolLinkBuilder& other);
  virtual ~CProtocolLinkBuilder();

  /// A name that is there already keeps its first value.
  void SetParameter(const wchar_t* name, const wchar_t* value);
  void SetArrayDelimiter(const wchar_t* delimiter);
  void SetProgressMessage(const wchar_t* message);
  /// \param sessionId required for RunAsSessionUser, else ignored and forgotten. The kind is stored before a
  /// missing one is refused.
  void SetRunUser(RunAsUser kind, const wchar_t* sessionId);
  /// Borrowed until the builder changes or dies.
  const wchar_t* Construct();

 private:
  void construct();
  void append(const wchar_t* fixed, const tovin::WideString& value);

  RunAsUser kind_ = RunAsDefaultUser;
  tovin::WideString protocolId_;
  tovin::WideString progressMessage_;
  tovin::WideString sessionId_;
  tovin::WideString serverBase_;
  std::wstring link_;
  tovin::WideString arrayDelimiter_;
  std::map<tovin::WideString, tovin::WideString, tovin::UnitOrder> parameters_;
};
