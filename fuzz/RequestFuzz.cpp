// Texts of server requests. The first byte chooses which, the rest is the text: UTF-8, split at line ends
// where several are wanted.
#include <cstdlib>

#include "tovinCore/Numbers.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/WebText.h"
#include "ztbaseclient/client/CCacheRequest.h"
#include "ztbaseclient/client/CProtocolLinkBuilder.h"
#include "ztbaseclient/client/ErrorPage.h"
#include "ztbaseclient/client/LocatorEndpointIdentity.h"

namespace {

using tovin::WideString;

void require(bool holds) {
  if (!holds) std::abort();
}

void readErrorPage(const std::wstring& text) { require(ErrorPage::reasonIn(text).size() <= text.size()); }

void readDisplayAttr(const std::wstring& text) {
  CCacheDisplayAttr attr;
  attr.SetDisplayAttr(text.c_str());
  require(std::wstring(attr.Serialize()) == text.c_str());
  CCacheComponentAttr component;
  component.Parse(text.c_str());
  require(std::wstring(component.Serialize()) == text.c_str());
}

// Lines of NAME=VALUE.
void readCacheArguments(const std::wstring& text) {
  CCacheRequest::Arguments arguments;
  for (const std::wstring& line : tovin::util::singleStringToMultipleStrings(text, L'\n')) {
    const size_t mark = std::min(line.find(L'='), line.size());
    arguments.put(WideString(line.substr(0, mark)), WideString(line.substr(std::min(mark + 1, line.size()))));
  }
  CCacheRequest request;
  WideString out;
  const bool accepted = request.PopulateFromArguments(arguments, 0, out);
  require(accepted == out.isNull());
  out.clear();
  request.AddToURLParameterBuffer(out, ~0u);
  for (wchar_t c : out.view()) require(c > L' ' && c < 0x7F);
}

void convertEndPoint(const std::wstring& text) {
  WideString endPoint, host, again;
  LocatorEndpointIdentity::HostAndPortToEndPoint(text.c_str(), endPoint, 801);
  require(endPoint.view().starts_with(L"http"));
  LocatorEndpointIdentity::EndPointToHostAndPort(endPoint, host);
  LocatorEndpointIdentity::EndPointToHostAndPort(text.c_str(), again);
}

// Server, protocol, then names and values in turn.
void buildLink(const std::wstring& text) {
  const auto lines = tovin::util::singleStringToMultipleStrings(text, L'\n');
  CProtocolLinkBuilder builder(lines[0].c_str(), lines.size() > 1 ? lines[1].c_str() : L"p");
  builder.SetRunUser(CProtocolLinkBuilder::RunAsAnonymous, nullptr);
  for (size_t i = 3; i < lines.size(); i += 2) builder.SetParameter(lines[i - 1].c_str(), lines[i].c_str());
  try {
    builder.Construct();
  } catch (const tovin::Exception&) {
    // No protocol.
  }
}

constexpr void (*targets[])(const std::wstring&) = {readErrorPage, readDisplayAttr, readCacheArguments,
                                                    convertEndPoint, buildLink};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  static const auto silent = tovin::Exception::setWarningHandler([](const wchar_t*) {});
  if (size == 0) return 0;
  const std::string_view text(reinterpret_cast<const char*>(bytes) + 1, size - 1);
  targets[bytes[0] % std::size(targets)](tovin::utf8ToWide(text));
  return 0;
}
