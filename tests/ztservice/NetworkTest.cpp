#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/WebServer.h"
#include "tests/ztservice/Services.h"

using testsupport::definitionsOf;
using testsupport::TempFolder;
using testsupport::WebServer;

namespace {

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
  // Why a service cannot be had.
  std::string failure(const std::string& path, const ztservice::Options& options = {}) const {
    try {
      ztservice::load(at(path), options);
    } catch (const ztservice::Error& e) {
      return tovin::wideToUtf8(e.getMessage());
    }
    return {};
  }

  TempFolder folder_;
  WebServer server_{"server.modules += (\"mod_alias\", \"mod_redirect\")\nalias.url = (\"/d/\" => \"" +
                    folder_.path() +
                    "/\")\nurl.redirect = (\"^/to-file\" => \"file:///etc/passwd\", \"^/loop\" => \"/loop\", "
                    "\"^/once\" => \"/d/s/main.wsdl\")\n"};
};

TEST_F(FetchedServices, AreReadWithWhatTheyReferToButNoFiles) {
  for (const char* path : {"/d/s/main.wsdl?wsdl", "/once"}) {
    const auto service = ztservice::load(at(path));
    EXPECT_NE(service.type({"urn:t", "A"}), nullptr) << path;
    ASSERT_EQ(service.warnings().size(), 1u);
    EXPECT_THAT(service.warnings()[0].toString(),
                testing::HasSubstr("a document from the network may not name one"));
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

}  // namespace
