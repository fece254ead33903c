#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/Certificates.h"
#include "tests/support/SocketServer.h"
#include "tests/support/WebServer.h"
#include "tests/ztservice/Services.h"

using testsupport::definitionsOf;
using testsupport::TempFolder;
using testsupport::WebServer;

namespace {

using testing::HasSubstr;

// Why a service cannot be had; empty where it can.
std::string failureOf(const std::string& address, const ztservice::Options& options) {
  try {
    ztservice::load(address, options);
  } catch (const ztservice::Error& e) {
    return tovin::wideToUtf8(e.getMessage());
  }
  return {};
}

class FetchedServices : public testing::Test {
 protected:
  FetchedServices() {
    folder_.write(
        "s/main.wsdl",
        definitionsOf(
            "<xs:include schemaLocation='../t/a.xsd#f'/><xs:import "
            "schemaLocation='file:///etc/passwd'/><xs:complexType name='T'><xs:sequence><xs:element name='a' "
            "type='t:A'/></xs:sequence></xs:complexType>"));
    folder_.write("t/a.xsd",
                  "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' "
                  "targetNamespace='urn:t'><xs:complexType name='A'/></xs:schema>");
    folder_.write("large.wsdl", std::string(100'000, ' '));
  }

  std::string at(const std::string& path) const {
    const std::string url = server_.url();
    return url.substr(0, url.rfind('/')) + path;
  }
  std::string failure(const std::string& path, const ztservice::Options& options = {}) const {
    return failureOf(at(path), options);
  }

  TempFolder folder_;
  WebServer server_{
      "server.modules += (\"mod_alias\", \"mod_redirect\", \"mod_deflate\")\n"
      "mimetype.assign = (\".wsdl\" => \"text/xml\")\ndeflate.mimetypes = (\"text/xml\")\n"
      "deflate.allowed-encodings = (\"gzip\")\nalias.url = (\"/d/\" => \"" +
      folder_.path() +
      "/\")\nurl.redirect = (\"^/to-file\" => \"file:///etc/passwd\", \"^/loop\" => \"/loop\", "
      "\"^/once\" => \"/d/s/main.wsdl\")\n"};
};

TEST_F(FetchedServices, AreReadWithWhatTheyReferToButNoFiles) {
  for (const char* path : {"/d/s/main.wsdl?wsdl", "/once"}) {
    const auto service = ztservice::load(at(path));
    EXPECT_NE(service.type({"urn:t", "A"}), nullptr) << path;
    ASSERT_EQ(service.warnings().size(), 1u);
    EXPECT_THAT(service.warnings()[0].toString(), HasSubstr("a document from the network may not name one"));
  }
  const testsupport::Files files = {
      {"main.wsdl", definitionsOf("<xs:include schemaLocation='" + at("/d/t/a.xsd") + "'/>")}};
  ztservice::Options fetch;
  EXPECT_EQ(testsupport::loadFiles(files).type({"urn:t", "A"}), nullptr);
  fetch.fetch = true;
  EXPECT_NE(testsupport::loadFiles(files, fetch).type({"urn:t", "A"}), nullptr);
}

TEST_F(FetchedServices, EndAtTheirLimits) {
  ztservice::Options small;
  small.limits.documentBytes = 5000;
  EXPECT_EQ(failure("/d/large.wsdl", small), "more than the 5000 bytes that are allowed");
  EXPECT_EQ(failure("/d/gone.wsdl"), "the server answers 404");
  EXPECT_EQ(failure("/loop"), "more than 10 redirections");
  EXPECT_EQ(failure("/to-file"), "redirects to file:///etc/passwd, which is neither HTTP nor HTTPS");
  ztservice::Options one;
  one.limits.documents = 1;
  EXPECT_EQ(ztservice::load(at("/d/s/main.wsdl"), one).type({"urn:t", "A"}), nullptr);
}

// 100,000 bytes are some hundred on their way.
TEST(PackedServices, AreMeasuredAsTheyAre) {
  const TempFolder folder;
  folder.write("a", definitionsOf("<xs:complexType name='T'/>") + std::string(100'000, ' '));
  testsupport::runShell("gzip " + testsupport::shellPath(folder.path("a")));
  const auto sendPacked = [&](testsupport::Connection& connection) {
    connection.readHead();
    connection.send("HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nConnection: close\r\n\r\n" +
                    folder.read("a.gz"));
  };
  const testsupport::SocketServer server({sendPacked, sendPacked});
  const std::string address = tovin::wideToUtf8(server.url());
  EXPECT_NE(ztservice::load(address).type({"urn:t", "T"}), nullptr);
  ztservice::Options options;
  options.limits.documentBytes = 50'000;
  EXPECT_EQ(failureOf(address, options), "more than the 50000 bytes that are allowed");
}

TEST(ServicesOverTls, AreReadOnlyWhereTheCertificateVerifies) {
  const testsupport::Certificates certificates;
  const TempFolder folder;
  folder.write("a.wsdl", definitionsOf("<xs:complexType name='T'/>"));
  ztservice::Options options;
  options.authorities = certificates.authority();
  const auto loadFrom = [&](const char* certificate) {
    const WebServer server("server.modules += (\"mod_alias\")\nalias.url = (\"/d/\" => \"" + folder.path() +
                               "/\")\n" + certificates.serverOf(certificate),
                           "localhost");
    const std::string url = server.url();
    return failureOf(url.substr(0, url.rfind('/')) + "/d/a.wsdl", options);
  };
  EXPECT_EQ(loadFrom("good"), "");
  EXPECT_THAT(loadFrom("self"), HasSubstr("certificate problem"));
  EXPECT_THAT(loadFrom("wrong"), HasSubstr("no alternative certificate subject name matches"));
}

TEST(SlowServices, EndWithTheTimeThatTheyMayTake) {
  using testsupport::Connection;
  using testsupport::SocketServer;
  const std::string head = "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n<a";
  ztservice::Options options;
  options.limits.transfer = std::chrono::milliseconds(300);
  for (const std::string& sent : {std::string(), head}) {
    std::atomic<bool> over = false;
    const SocketServer server({[&](Connection& connection) {
      connection.readHead();
      connection.send(sent);
      connection.hold(over);
    }});
    EXPECT_THAT(failureOf(tovin::wideToUtf8(server.url()), options), HasSubstr("timed out"));
    over = true;
  }
  // Less than was announced is no document.
  const SocketServer server({[&](Connection& connection) {
    connection.readHead();
    connection.send(head);
  }});
  EXPECT_THAT(failureOf(tovin::wideToUtf8(server.url()), options), HasSubstr("transfer closed"));
}

}  // namespace
