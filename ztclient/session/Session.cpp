#include "ztclient/session/Session.h"

#include <algorithm>
#include <chrono>

#include "tovin/values/BitsetValue.h"
#include "tovin/values/StringArrayValue.h"
#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Environment.h"
#include "ztbaseclient/ztbaseclient.h"
#include "ztclient/Version.h"
#include "ztclient/answers/WsdlJson.h"
#include "ztclient/input/Document.h"
#include "ztclient/input/GivenNames.h"
#include "ztclient/input/InputFile.h"
#include "ztclient/session/BundledService.h"
#include "ztclient/session/JobParameters.h"
#include "ztclient/session/Measurements.h"
#include "ztclient/terminal/ProgressBar.h"
#include "ztclient/terminal/Terminal.h"
#include "ztcore/ztMemoryStreams.h"

using tovin::utf8ToWide;
using tovin::WideString;
using tovin::wideToUtf8;

namespace {

constexpr const wchar_t* userName = L"ann";
constexpr const wchar_t* jobId = L"4711";
constexpr const wchar_t* resultName = L"compounds.txt";
constexpr const wchar_t* arrayDelimiter = L";";
constexpr unsigned chemist = 3;
constexpr unsigned roleCount = 16;
constexpr size_t labelWidth = 12;
constexpr size_t shownOperations = 6;
constexpr size_t shownMembers = 4;
constexpr size_t shownBytes = 16;
constexpr size_t shownText = 40;

std::string utf8(const WideString& text) { return wideToUtf8(text.view()); }
std::string textOf(const Json& json, const char* key) { return json.value(key, std::string()); }

// The beginning of a long text, and how long it is.
std::string shortened(const std::string& text) {
  if (text.size() <= shownText) return text;
  return text.substr(0, shownText) + "… (" + std::to_string(text.size()) + " characters)";
}

std::string plural(size_t count, const std::string& one) {
  return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

void requireAgreement(bool agree, const wchar_t* what) {
  if (!agree) throw tovin::Exception(L"%ls do not agree", what);
}

CAuthRolesCache* makeRoles() {
  CAuthRolesCache* cache = CAuthRolesCache::allocate();
  cache->SetRole(0, L"Client/Administrator");
  cache->SetRole(chemist, L"Chemist");
  return cache;
}

void fill(CCredentials& credentials, CAuthRolesCache* roles) {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  credentials.SetUsername(userName);
  credentials.SetPassword(L"correct horse");
  credentials.SetDomain(L"LAB");
  credentials.SetClientMachineName(tovin::platform::computerName().c_str());
  credentials.SetClientVersion(utf8ToWide(version::text).c_str());
  credentials.SetLoginTime(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
  tovin::BitsetValue bits(roleCount);
  bits.setOn(chemist);
  CAuthRoles held;
  held.SetRoleBits(bits);
  credentials.SetRoles(held);
  credentials.SetRolesCache(roles);
}

bool sameFields(const CCredentials& a, const CCredentials& b) {
  return WideString(a.GetUsername()) == b.GetUsername() && WideString(a.GetPassword()) == b.GetPassword() &&
         WideString(a.GetDomain()) == b.GetDomain() && a.GetLoginTime() == b.GetLoginTime() &&
         WideString(a.GetClientMachineName()) == b.GetClientMachineName();
}

// "complex runProtocol (protocol, inputFile, limit, similarity, … 7 in all)"
std::string describePart(const Json& part) {
  const Json& resolved = part["resolved"];
  if (resolved.contains("error")) return textOf(part, "name") + " (" + textOf(resolved, "error") + ")";
  std::string text = textOf(part, "name") + ": " + textOf(resolved, "kind") + " " + textOf(resolved, "name");
  const Json& elements = resolved["elements"];
  if (elements.empty()) return text;
  text += " (";
  for (size_t i = 0; i < elements.size() && i < shownMembers; ++i)
    text += (i > 0 ? ", " : "") + textOf(elements[i], "name");
  if (elements.size() > shownMembers) text += ", … " + std::to_string(elements.size()) + " in all";
  return text + ")";
}

std::string describeMessage(const Json& message) {
  std::string text;
  for (const Json& part : message["parts"]) text += (text.empty() ? "" : "; ") + describePart(part);
  return text.empty() ? "nothing" : text;
}

std::string hexOf(const unsigned char* bytes, size_t count) {
  constexpr const char* digits = "0123456789ABCDEF";
  std::string text;
  for (size_t i = 0; i < count; ++i) {
    text += i > 0 ? " " : "";
    text += {digits[bytes[i] >> 4], digits[bytes[i] & 15]};
  }
  return text;
}

std::string className(const tovin::Object& object) {
  const std::string name = static_cast<const char*>(object.getClassTag());
  return name.substr(name.rfind('.') + 1);
}

template <class Visit>
void forParameters(const tovin::iNode& job, Visit&& visit) {
  for (const tovin::iNode* part : job.getChildren()) {
    const tovin::iPropertyCollection* properties = part->getProperties();
    for (unsigned i = 0; properties && i < properties->getSize(); ++i) visit(*properties->get(i));
  }
}

// What a receiver makes of a record: the node that its carrier brings, of the class that the record names.
tovin::Ptr<tovin::iNode> receive(const ztMemoryByteOutputStream& record) {
  ztMemoryByteInputStream stream(record.GetBytes(), record.GetSize());
  const tovin::Ptr<CObjectTransportNode> carrier(CObjectTransportNode::allocate());
  carrier->deserialize(stream);
  requireAgreement(stream.GetRemaining() == 0, L"Length and content of the record");
  return tovin::seek<tovin::iNode>(carrier->GetObject());
}

CCacheRequest::Arguments cacheArguments() {
  CCacheRequest::Arguments arguments;
  arguments.put(WideString(L"user"), WideString(userName));
  arguments.put(WideString(L"cacheid"), WideString(L"results"));
  arguments.put(WideString(L"recnum"), WideString(L"120"));
  arguments.put(WideString(L"displayattr"), WideString(L"2;6;20;7"));
  return arguments;
}

// The texts of a list with the delimiter between, any other value as its text.
std::wstring joined(const tovin::Value& value) {
  const auto* list = tovin::seek<tovin::StringArrayValue>(static_cast<const tovin::Object*>(&value));
  if (!list) return std::wstring(WideString(value.getText()).view());
  std::wstring text;
  for (const WideString& item : list->content()) {
    if (!text.empty()) text += arrayDelimiter;
    text += item.view();
  }
  return text;
}

// A link with each parameter on a line of its own, the session shortened.
std::string wrapped(const std::string& link) {
  std::string text;
  for (size_t at = 0; at < link.size();) {
    const size_t end = std::min(link.find('&', at + 1), link.size());
    const std::string piece = link.substr(at, end - at);
    text += (at > 0 ? "\n" : "") + (piece.starts_with("&_session=") ? shortened(piece) : piece);
    at = end;
  }
  return text;
}

}  // namespace

Session::Session(std::ostream& out, const std::string& wsdl, const std::string& server)
    : out_(out), wsdl_(wsdl), server_(server) {
  if (server_.empty()) server_ = startServer();
  while (server_.ends_with('/')) server_.pop_back();
}

// No proxy leads to a server on this computer.
std::string Session::startServer() {
  tovin::platform::setEnvironmentVariable("no_proxy", "127.0.0.1");
  return ownServer_.emplace().url();
}

void Session::run() {
  introduce();
  login();
  findEndPoint();
  readService();
  shipParameters();
  buildLink();
  upload();
  askCache();
  compareResult();
}

void Session::introduce() const {
  if (ownServer_)
    out_ << "No server was named: the session starts a small one of its own, " << server_ << '\n';
  if (wsdl_.empty())
    out_ << "No WSDL was named: the session reads the bundled " << bundled::serviceName << '\n';
}

void Session::begin(const char* title) {
  out_ << '\n' << terminal::Heading{std::to_string(++step_) + ". " + title} << '\n';
}

// Further lines of the text stand below its first one.
void Session::line(const std::string& label, const std::string& text) const {
  std::string margin(3, ' ');
  out_ << margin << label << std::string(labelWidth - std::min(label.size(), labelWidth - 1), ' ');
  margin.append(labelWidth, ' ');
  for (char c : text) {
    out_ << c;
    if (c == '\n') out_ << margin;
  }
  out_ << '\n';
}

void Session::login() {
  begin("Credentials string");
  const tovin::Ptr<CAuthRolesCache> roles(makeRoles());
  CCredentials credentials;
  fill(credentials, roles.get());
  credentials.GenerateCredentialsString(credentials_);
  line("made", shortened(utf8(credentials_)));

  CCredentials received(credentials_);
  requireAgreement(received.VerifyChecksum(), L"Credentials string and checksum");
  const std::string checksum = std::to_string(received.GetQuickChecksum());
  received.DecryptBody();
  requireAgreement(sameFields(credentials, received), L"Credentials and what was read back");
  received.SetRolesCache(roles.get());
  line("read back", wideToUtf8(received.GetUsername()) + " of " + wideToUtf8(received.GetDomain()) + " at " +
                        wideToUtf8(received.GetClientMachineName()));
  line("roles", std::string("Chemist ") + (received.IsMemberOf(L"Chemist") ? "yes" : "no") +
                    ", Client/Administrator " +
                    (received.IsMemberOf(L"Client/Administrator") ? "yes" : "no"));
  line("verified", "checksum " + checksum + " fits, every field came back");
}

void Session::findEndPoint() {
  begin("End point of the locator");
  WideString endPoint, text;
  LocatorEndpointIdentity::HostAndPortToEndPoint(utf8ToWide(server_).c_str(), endPoint, 801);
  LocatorEndpointIdentity::EndPointToHostAndPort(endPoint, text);
  line("server", utf8(endPoint));
  line("back", utf8(text));
  LocatorEndpointIdentity::HostAndPortToEndPoint(L"atlas", endPoint, 801);
  line("host alone", "atlas is " + utf8(endPoint));
}

void Session::load(CWsdlParser& parser) const {
  if (!wsdl_.empty()) return loadWsdl(parser, wsdl_);
  const std::string document = bundled::serviceAt(server_);
  ztMemoryByteInputStream stream(document.data(), document.size());
  parser.Parse(stream);
}

Json Session::describeService() const {
  try {
    CWsdlParser parser;
    load(parser);
    return wsdlToJson(parser, true);
  } catch (const tovin::Exception& e) {
    throw withCharacters(e);
  }
}

void Session::readService() {
  begin("The service and its WSDL");
  const Json service = describeService();
  line("service", textOf(service, "service") + " of " + textOf(service, "targetNamespace"));
  for (const Json& port : service["ports"]) {
    const Json& operations = port["binding"]["operations"];
    line("port", textOf(port, "name") + " at " + textOf(port, "address") + ", " +
                     (port["binding"]["documentStyle"] ? "document" : "rpc"));
    for (size_t i = 0; i < operations.size() && i < shownOperations; ++i) {
      line("  operation", textOf(operations[i], "name"));
      line("    in", describeMessage(operations[i]["input"]));
      line("    out", describeMessage(operations[i]["output"]));
    }
    if (operations.size() > shownOperations)
      line("", "… " + plural(operations.size() - shownOperations, "more operation"));
  }
  operation_ = jobs::operationWithMostMembers(service);
  if (operation_.is_null()) throw tovin::Exception(L"The service has no operation");
}

void Session::shipParameters() {
  begin("A job's parameters as a record");
  job_ = jobs::treeFor(operation_);
  line("operation", textOf(operation_, "name"));
  forParameters(*job_, [&](const tovin::iProperty& property) {
    line("  parameter", wideToUtf8(property.getName()) + " = " + wideToUtf8(joined(property.getValue())) +
                            " (" + className(property.getValue()) + ")");
  });

  const tovin::Ptr<CObjectTransportNode> carrier(CObjectTransportNode::allocate());
  carrier->SetObject(job_.get());
  ztMemoryByteOutputStream record, again;
  carrier->serialize(record);
  line("written", std::to_string(record.GetSize()) +
                      " bytes: " + hexOf(record.GetBytes(), std::min(record.GetSize(), shownBytes)) + " …");
  const tovin::Ptr<tovin::iNode> received = receive(record);
  carrier->SetObject(received.get());
  carrier->serialize(again);
  requireAgreement(std::equal(record.GetBytes(), record.GetBytes() + record.GetSize(), again.GetBytes(),
                              again.GetBytes() + again.GetSize()),
                   L"The tree and what was read back");
  int count = 0;
  received->query(L"count(/job/*/@*)", tovin::iXPathParser::elements, count);
  line("read back", "a " + className(*received) + " with " + plural(static_cast<size_t>(count), "parameter") +
                        ", the same byte for byte");
}

void Session::buildLink() {
  begin("Link that runs the protocol");
  CProtocolLinkBuilder builder(utf8ToWide(server_).c_str(), utf8ToWide(textOf(operation_, "name")).c_str());
  builder.SetArrayDelimiter(arrayDelimiter);
  builder.SetProgressMessage(L"Your job is on its way");
  builder.SetRunUser(CProtocolLinkBuilder::RunAsSessionUser, credentials_);
  forParameters(*job_, [&](const tovin::iProperty& property) {
    builder.SetParameter(property.getName(), joined(property.getValue()).c_str());
  });
  line("link", wrapped(wideToUtf8(builder.Construct())));
}

void Session::upload() {
  begin("Upload");
  result_ = measurements::table(measurements::allDigits);
  const InputFile file(result_, resultName);
  const std::string url = server_ + "/perlbin/upload.pl";
  {
    ProgressBar bar;
    ztSoapUtils::UploadViaCGI(
        file.name(), resultName, jobId, credentials_, true, utf8ToWide(url).c_str(),
        [&](uint64_t done, uint64_t length) { bar.show(done, length); }, resultName);
  }
  line("sent", wideToUtf8(resultName) + ", " + std::to_string(result_.size()) + " bytes, to " + url);
  if (!ownServer_) return line("server", "took it");
  const auto received = ownServer_->received();
  if (!received) throw tovin::Exception(L"The server received nothing");
  showReceived(*received);
}

void Session::showReceived(const UploadServer::Received& received) {
  WideString user;
  CCredentials::GetUserNameFromSessionId(utf8ToWide(received.session).c_str(), user);
  line("received", received.fileName + " from " + utf8(user) + " for job " + received.job.value_or("none"));
  line("on the wire", std::to_string(received.encodedSize) + " bytes, " + received.encoding + ", in " +
                          plural(received.chunks, "chunk"));
  requireAgreement(received.file == result_, L"The file and what the server received");
  line("unpacked", std::to_string(received.file.size()) + " bytes, equal to the file");
}

void Session::askCache() {
  begin("Request to the result cache");
  constexpr unsigned required = CCacheRequest::User | CCacheRequest::JobID | CCacheRequest::CacheID;
  CCacheRequest::Arguments arguments = cacheArguments();
  CCacheRequest incomplete, request;
  WideString text;
  if (!incomplete.PopulateFromArguments(arguments, required, text)) line("refused", utf8(text));
  arguments.put(WideString(L"jobid"), WideString(jobId));
  text.clear();
  if (!request.PopulateFromArguments(arguments, required, text)) throw tovin::Exception(L"%ls", text);
  request.AddToURLParameterBuffer(text, request.GetArguments());
  line("request", utf8(text));
}

void Session::showComparison(const std::string& label, const std::string& reference, int tolerance) const {
  const InputFile result(result_, L"result.txt");
  const InputFile other(reference, L"reference.txt");
  std::wstring finding = L"equal";
  try {
    CDiffFiles().CompareFiles(result.name(), other.name(), tolerance);
  } catch (const tovin::DiffWarningException& e) {
    finding = e.getMessage();
  } catch (const tovin::DiffErrorException& e) {
    finding = givenNames::in(e.getMessage());
    finding.erase(finding.find_last_not_of(L'\n') + 1);
  }
  line(label, wideToUtf8(finding));
}

void Session::compareResult() {
  begin("Result against a reference");
  const std::string rounded = measurements::table(measurements::fewDigits);
  showComparison("itself", result_, 0);
  showComparison("rounded", rounded, CDiffFiles::DefaultTolerance);
  showComparison("exactly", rounded, 0);
}
