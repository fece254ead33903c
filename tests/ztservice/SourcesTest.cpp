#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/Threads.h"
#include "tests/ztservice/Services.h"

using testsupport::definitionsOf;
using testsupport::Files;
using testsupport::loadFiles;

namespace {

const std::string type = "<xs:complexType name='A'/>";

std::string schemaOf(const std::string& inside) {
  return "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:t'>" + inside +
         "</xs:schema>";
}

std::string catalogOf(const std::string& entries) {
  return "<catalog xmlns='urn:oasis:names:tc:entity:xmlns:xml:catalog'>" + entries + "</catalog>";
}

TEST(Catalogues, SayWhereCopiesAre) {
  struct Case {
    const char* reference;
    std::string catalog;
    bool found;
  };
  const std::vector<Case> cases = {
      {"namespace='urn:a' schemaLocation='http://h/x/a.xsd'", "<uri name='http://h/x/a.xsd' uri='a.xsd'/>",
       true},
      {"namespace='urn:a' schemaLocation='http://h/x/a.xsd'",
       "<group xml:base='n/'><system systemId='http://h/x/a.xsd' uri='../a.xsd'/></group>", true},
      {"namespace='urn:a' schemaLocation='http://h/x/a.xsd'",
       "<rewriteURI uriStartString='http://h/' rewritePrefix='no/'/><rewriteSystem "
       "systemIdStartString='http://h/x/' rewritePrefix=''/>",
       true},
      {"namespace='urn:a' schemaLocation='http://h/x/a.xsd'", "<uriSuffix uriSuffix='/a.xsd' uri='a.xsd'/>",
       true},
      {"namespace='urn:a' schemaLocation='http://h/x/a.xsd'",
       "<nextCatalog catalog='gone.xml'/><nextCatalog catalog='catalog.xml'/><nextCatalog "
       "catalog='next.xml'/>",
       true},
      {"namespace='urn:a' schemaLocation='http://h/x/a.xsd'",
       "<delegateURI uriStartString='http://h/' catalog='next.xml'/>", true},
      {"namespace='urn:a' schemaLocation='http://h/x/a.xsd'",
       "<delegateURI uriStartString='http://' catalog='gone.xml'/><nextCatalog catalog='next.xml'/>", false},
      {"namespace='urn:a' schemaLocation='http://h/x/a.xsd'", "<uri name='urn:a' uri='a.xsd'/>", true},
      {"namespace='urn:a'", "<uri name='urn:a' uri='a.xsd'/>", true},
      {"namespace='urn:a' schemaLocation='gone.xsd'", "<uri name='urn:a' uri='a.xsd'/>", false},
      {"namespace='urn:a' schemaLocation='gone.xsd'", "<uri name='gone.xsd' uri='a.xsd'/>", true},
      {"namespace='urn:a' schemaLocation='http://h/x/a.xsd'", "", false},
  };
  for (const Case& one : cases) {
    const Files files = {{"main.wsdl", definitionsOf(std::string("<xs:import ") + one.reference +
                                                     "/><xs:complexType name='T'><xs:sequence><xs:element "
                                                     "name='a' type='t:A'/></xs:sequence></xs:complexType>")},
                         {"c/a.xsd", schemaOf(type)},
                         {"c/catalog.xml", catalogOf(one.catalog)},
                         {"c/next.xml", catalogOf("<uri name='http://h/x/a.xsd' uri='a.xsd'/>")}};
    ztservice::Options options;
    options.catalogs = {"c/catalog.xml"};
    EXPECT_EQ(loadFiles(files, options).type({"urn:t", "A"}) != nullptr, one.found)
        << one.reference << one.catalog;
  }
  ztservice::Options options;
  options.catalogs = {"main.wsdl"};
  EXPECT_THROW(loadFiles({{"main.wsdl", definitionsOf("")}}, options), ztservice::Error);
  options.catalogs = {"default"};
  EXPECT_NE(loadFiles({{"main.wsdl",
                        definitionsOf("<xs:import namespace='http://www.w3.org/2005/08/addressing'/>")}},
                      options)
                .type({"http://www.w3.org/2005/08/addressing", "EndpointReferenceType"}),
            nullptr);
}

TEST(References, ThatLeadToTheNetworkAreWarningsWithTheirPlace) {
  const auto service = loadFiles(
      {{"main.wsdl",
        definitionsOf(
            "\n <xs:import namespace='urn:x' schemaLocation='https://me:secret@h/a.xsd'/><xs:import "
            "schemaLocation='ftp://h/b'/>")}});
  ASSERT_EQ(service.warnings().size(), 2u);
  EXPECT_EQ(service.warnings()[0].toString(),
            "main.wsdl:5:2: https://h/a.xsd lies on the network; --fetch reads it, --catalog FILE says where "
            "a copy is");
  EXPECT_THAT(service.warnings()[1].toString(), testing::HasSubstr("only files, http and https are"));
}

TEST(Services, CanBeReadByThreadsAtOnce) {
  const std::string hidden =
      "<xs:complexType name='H'><xs:sequence><xs:element name='h'><xs:complexType><xs:sequence><xs:element "
      "name='i' type='t:A'/></xs:sequence></xs:complexType></xs:element></xs:sequence></xs:complexType>";
  const auto service =
      loadFiles({{"main.wsdl", definitionsOf("<xs:complexType name='T'/>" + type + hidden)}});
  testsupport::inThreads(8, [&](int) {
    for (int round = 0; round < 50; ++round) {
      const ztservice::Type* found = service.type({"urn:t", "H"});
      ASSERT_NE(found, nullptr);
      EXPECT_EQ(found->members[0].type.anonymous->members[0].type.name.local, "A");
      EXPECT_EQ(service.type({"urn:t", "none"}), nullptr);
      EXPECT_EQ(service.narrowedTo("o").types().size(), 1u);
    }
  });
}

}  // namespace
