// Everything above the trees: documents, services, credentials, links, files. Whoever fails leaves at least a
// whole object; most promise no more, and the same call succeeds afterwards.
#include <fstream>
#include <iterator>

#include "tests/fault/Sweep.h"
#include "tests/support/TempFolder.h"
#include "ztbaseclient/ztbaseclient.h"
#include "ztcore/ztBlowFish.h"
#include "ztcore/ztCompress.h"
#include "ztcore/ztFile.h"
#include "ztcore/ztRegistry.h"
#include "ztcore/ztStringReader.h"

namespace {

using namespace faults;
using tovin::wideToUtf8;

std::string utf8(const tovin::WideString& text) { return wideToUtf8(text.view()); }

const char* const serviceFile = ZTB_TEST_DATA "/../../examples/jobs.wsdl";

std::string serviceDocument() {
  std::ifstream file(serviceFile, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string describe(CWsdlParser& parser) {
  tovin::WideString targetNamespace, service;
  tovin::Array<CWsdlParser::CPort> ports;
  parser.GetDefinitionsInfo(targetNamespace);
  parser.GetServiceInfo(service, ports);
  std::string text = utf8(targetNamespace) + ' ' + utf8(service);
  for (CWsdlParser::CPort& port : ports) {
    parser.GetOperationInfoFromPortType(port.binding.type, port.binding.operations);
    for (const CWsdlParser::COperation& operation : port.binding.operations) {
      text += ' ' + utf8(operation.name);
      for (const CWsdlParser::CPart& part : operation.input.parts) {
        CWsdlParser::CCustomType type;
        if (part.element.isEmpty())
          parser.GetCustomTypeInfoRPC(part, type);
        else
          parser.GetCustomTypeInfoDoc(part, type);
        for (const CWsdlParser::CElement& element : type.elements) text += ' ' + utf8(element.name);
      }
    }
  }
  return text;
}

struct Service {
  std::unique_ptr<CWsdlParser> parser = std::make_unique<CWsdlParser>();
  std::string text;
};

Service parsedService() {
  Service service;
  service.parser->Parse(tovin::WideString(tovin::utf8ToWide(serviceFile)));
  return service;
}

TEST(FailingAllocation, LeavesServices) {
  const tovin::Array<unsigned char> bytes = testsupport::arrayOf(serviceDocument());
  ASSERT_GT(bytes.getSize(), 0u);
  const auto look = [](const Service& service) { return service.text; };
  sweep(
      {"Parse", After::whole}, [] { return Service(); }, look,
      [&](Service& service) {
        service.parser->Parse(bytes);
        service.text = service.parser->HasParsedWsdl() ? "parsed" : "empty";
      });
  sweep({"GetZippedWsdl"}, parsedService, look, [](Service& service) {
    tovin::Array<unsigned char> zipped;
    service.parser->GetZippedWsdl(zipped);
    CWsdlParser again;
    again.ParseZippedWsdl(zipped);
    service.text = std::to_string(zipped.getSize());
  });
}

TEST(FailingAllocation, LeavesQuestionsToServices) {
  sweep(
      {"all questions"}, parsedService, [](const Service& service) { return service.text; },
      [](Service& service) { service.text = describe(*service.parser); });
}

TEST(FailingAllocation, LeavesCredentialsAndRoles) {
  struct Holder {
    std::unique_ptr<CCredentials> credentials = std::make_unique<CCredentials>();
    std::string text;
  };
  const auto filled = [] {
    Holder holder;
    holder.credentials->SetUsername(L"ann");
    holder.credentials->SetPassword(L"correct horse");
    holder.credentials->SetDomain(L"LAB");
    return holder;
  };
  const auto look = [](const Holder& holder) {
    return wideToUtf8(holder.credentials->GetUsername()) + ' ' +
           wideToUtf8(holder.credentials->GetPassword()) + ' ' + wideToUtf8(holder.credentials->GetDomain()) +
           ' ' + holder.text;
  };
  sweep({"SetUsername"}, filled, look,
        [](Holder& h) { h.credentials->SetUsername(std::wstring(200, L'u').c_str()); });
  sweep(
      {"operator="}, [] { return Holder(); }, look,
      [&](Holder& h) { *h.credentials = *filled().credentials; });
  sweep({"copy constructor"}, filled, look, [](Holder& h) { const CCredentials copy(*h.credentials); });
  sweep({"GenerateCredentialsString"}, filled, look, [](Holder& h) {
    tovin::WideString text;
    h.credentials->GenerateCredentialsString(text);
    CCredentials received(text);
    const bool intact = received.VerifyChecksum();
    received.DecryptBody();
    h.text = wideToUtf8(received.GetUsername()) + (intact ? " intact" : " damaged");
  });
  sweepResult({"roles"}, [] {
    const tovin::Ptr<CAuthRolesCache> cache(CAuthRolesCache::allocate());
    for (unsigned i = 0; i < 40; ++i) cache->SetRole(i, (L"role" + std::to_wstring(i)).c_str());
    CAuthRoles roles(cache.get());
    roles.AddToRole(L"role3");
    roles.AddToRole(L"ROLE39");
    roles.RemoveFromRole(L"role3");
    CAuthRoles::NameList names;
    roles.GetRoles(names);
    CAuthRolesCache::RoleMap map;
    cache->GetRoleBitValues(map);
    return utf8(names[0]) + std::to_string(names.getSize());
  });
  sweepResult({"authentication parameters"}, [] {
    CAuthParameters parameters;
    parameters.SetUserName(L"ann");
    parameters.SetPassword(L"correct horse");
    tovin::WideString password;
    parameters.GetPassword(password);
    return utf8(password);
  });
}

TEST(FailingAllocation, LeavesLinksAndRequests) {
  sweepResult({"link"}, [] {
    CProtocolLinkBuilder builder(L"atlas:9944", L"Find Similar");
    builder.SetParameter(L"limit", L"10");
    builder.SetArrayDelimiter(L",");
    builder.SetProgressMessage(L"a moment");
    const CProtocolLinkBuilder copy(builder);
    return wideToUtf8(builder.Construct());
  });
  sweepResult({"cache request"}, [] {
    CCacheRequest request;
    request.SetUserName(L"ann");
    request.SetJobID(L"job-7");
    request.SetCacheID(L"cache 9");
    tovin::WideString url(L"http://atlas/?");
    request.AddToURLParameterBuffer(url, 0xFFFFFFFF);
    request.MakeFieldList(0xFFFFFFFF, url);
    return utf8(url);
  });
}

class FailingFiles : public testsupport::FolderTest {};

TEST_F(FailingFiles, AreReadComparedAndWritten) {
  std::string log;
  for (int i = 0; i < 3; ++i) log += "<<<ConsoleEntry\nTime=1\nText=hello\nConsoleEntry>>>\n";
  const std::wstring logFile = file("job.log", log);
  sweepResult({"log"}, [=] {
    CConsoleReader reader(logFile.c_str(), 0);
    CConsoleEntry entry;
    int entries = 0;
    while (reader.GetNextEntry(entry)) ++entries;
    return std::to_string(entries) + ' ' + std::to_string(reader.GetPosition());
  });
  const std::wstring a = file("a.txt", "x 1.0\ny 2\n"), b = file("b.txt", "x 1.0\ny 3\n"),
                     same = file("c.txt", "x 1.0\ny 2\n");
  sweepResult({"equal files"},
              [=] { return std::to_string(CDiffFiles().CompareFiles(a.c_str(), same.c_str(), 3)); });
  sweepResult({"equal files, bytes"},
              [=] { return std::to_string(CDiffFiles().CompareFilesBinary(a.c_str(), same.c_str())); });
  sweepResult({"different files"}, [=]() -> std::string {
    try {
      CDiffFiles().CompareFiles(a.c_str(), b.c_str(), 3);
    } catch (const tovin::DiffErrorException& e) {
      return wideToUtf8(e.getMessage());
    }
    return "equal";
  });
  sweepResult({"lines"}, [=] {
    ztStringReader reader(logFile.c_str());
    tovin::WideString line;
    int lines = 0;
    while (reader.GetLine(line)) ++lines;
    return std::to_string(lines);
  });
  sweepResult({"checksum"}, [] {
    ztChecksum checksum;
    checksum.AddString(L"user");
    checksum.AddString(std::wstring(500, L's').c_str());
    ztChecksum copy(checksum);
    copy = checksum;
    return wideToUtf8(copy.GetChecksum());
  });
}

TEST_F(FailingFiles, KeepSettings) {
  const testsupport::OwnSettings settings;
  sweepResult({"settings"}, [] {
    ztRegistry registry;
    registry.Connect(ztRegistry::CurrentUser);
    registry.Create(L"Software\\Test");
    registry.SetValue(L"name", L"a value");
    tovin::WideString value;
    registry.GetValue(L"name", value);
    return utf8(value);
  });
}

}  // namespace
