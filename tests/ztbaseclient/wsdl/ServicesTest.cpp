#include "tests/ztbaseclient/wsdl/Wsdl.h"
#include "ztbaseclient/wsdl/NodeSearch.h"

namespace {

using namespace testsupport;

constexpr char soap12[] = "xmlns:soap12='http://schemas.xmlsoap.org/wsdl/soap12/' ";
constexpr char http[] = "xmlns:http='http://schemas.xmlsoap.org/wsdl/http/' ";

std::string port(const std::string& name, const std::string& binding, const std::string& inside) {
  return "<port name='" + name + "' binding='" + binding + "'>" + inside + "</port>";
}

std::string binding(const std::string& name, const std::string& inside = {},
                    const std::string& type = "t:P") {
  return "<binding name='" + name + "' type='" + type + "'>" + inside + "</binding>";
}

class Services : public testing::Test {
 protected:
  void read(const std::string& inside, const std::string& attributes = "targetNamespace='urn:t'") {
    parser_.Reset();
    wsdl::parse(parser_, wsdl::definitions(inside, attributes));
    tovin::WideString target;
    parser_.GetDefinitionsInfo(target);
    parser_.GetServiceInfo(service_, ports_);
  }
  void readBinding(const std::string& inside) {
    read("<service>" + port("p", "B", "<soap:address/>") + "</service>" + binding("B", inside));
  }
  const CWsdlParser::CBinding& first() { return ports_[0].binding; }

  CWsdlParser parser_;
  tovin::WideString service_;
  tovin::Array<CWsdlParser::CPort> ports_;
};

TEST_F(Services, TheLastOneCounts) {
  read("<service name='a'/><service name='b'>" + port("p", "t:B", "<soap:address location='l'/>") +
       "</service>" + binding("b", "", "first") + binding("B", "", "second"));
  EXPECT_EQ(service_, L"b");
  EXPECT_EQ(ports_[0].address, L"l");
  EXPECT_EQ(first().name, L"t:B");
  EXPECT_EQ(first().type, L"first");
}

TEST_F(Services, AddressesTellSoap11AndHttpFromOthers) {
  const std::tuple<const char*, bool, const wchar_t*> rows[] = {
      {"<soap12:address location='a'/>", false, L"a"},
      {"<http:address location='a'/>", true, L"a"},
      {"<address location='a'/>", true, L"a"},
      {"<nobody:address location='a'/>", false, L"a"},
      {"<inner:address xmlns:inner='http://schemas.xmlsoap.org/wsdl/soap/' location='a'/>", false, L"a"},
      {"<x:address location='other'/><soap:address location='a'/>", true, L"a"},
      {"<soap:address/>", true, L""}};
  for (const auto& [address, soap11OrHttp, location] : rows) {
    SCOPED_TRACE(address);
    read("<service>" + port("p", "B", address) + "</service>" + binding("B"),
         std::string("targetNamespace='urn:t' ") + soap12 + http);
    EXPECT_EQ(ports_[0].soap11OrHttp, soap11OrHttp);
    EXPECT_EQ(ports_[0].address, location);
  }
}

TEST_F(Services, OnePortIsKeptForEachBinding) {
  const std::string service = "<service>" + port("none", "B", "") + port("p", "t:B", "<soap:address/>") +
                              port("q", "T:b", "<soap:address/>") + port("r", "B", "<soap:address/>") +
                              "</service>";
  EXPECT_EQ(warningsOf([&] { read(service + binding("B")); }), L"ignoring port q with shared binding T:b");
  ASSERT_EQ(ports_.getSize(), 2u);
  EXPECT_EQ(ports_[1].name, L"r");
}

TEST_F(Services, MissingPartsHaveTheirMessages) {
  const std::string soapPort = port("p", "t:B", "<soap:address/>");
  const std::string broken = "<service>" + soapPort + "</service><binding/>";
  expectMessage(L"missing targetNamespace", [&] { read("", ""); });
  expectMessage(L"missing service", [&] { read(""); });
  expectMessage(L"Unable to find soap addresses. This WSDL may not have soap methods.",
                [&] { read("<service>" + port("p", "B", "") + "</service>"); });
  expectMessage(L"Can't find binding t:B", [&] { read(broken); });
  EXPECT_EQ(trailOf([&] { read(broken); }), "CWsdlParser.GetBindingInfo() CWsdlParser.GetServiceInfo ");
  ASSERT_EQ(ports_.getSize(), 1u);  // the port that was being read
  EXPECT_EQ(ports_[0].name, L"p");
}

TEST_F(Services, StyleIsDocumentUnlessItSaysRpc) {
  const std::tuple<const char*, bool, bool> rows[] = {
      {"<operation/>", true, true},
      {"<soap:binding/><operation/>", true, true},
      {"<soap:binding style='RPC'/><operation/>", false, false},
      {"<soap:binding style=''/><operation/>", true, true},
      {"<soap:binding style='rpc'/><operation><soap:operation style='document'/></operation>", false, true},
      {"<soap:binding style='rpc'/><soap:binding style='document'/><operation><soap:operation/></operation>",
       true, true},
      {"<operation><soap:operation style='rpc'/></operation>", true, false},
      {"<other:binding style='rpc'/><operation/>", true, true}};
  for (const auto& [inside, binding, operation] : rows) {
    readBinding(inside);
    EXPECT_EQ(first().documentStyle, binding) << inside;
    EXPECT_EQ(first().operations[0].documentStyle, operation) << inside;
  }
}

TEST_F(Services, EncodingOfTheInputIsKeptOnTheOperation) {
  const std::pair<const char*, const wchar_t*> rows[] = {
      {"<input><soap:body use='encoded' namespace='n'/></input>", L"encoded"},
      {"<input><soap:body/></input>", L""},
      {"<input/>", L"literal"},
      {"<input><x:body use='encoded'/></input>", L"literal"},
      {"<output><soap:body use='encoded' namespace='o'/></output>", nullptr}};
  for (const auto& [inside, encoding] : rows) {
    readBinding(std::string("<operation name='o'>") + inside + "</operation>");
    EXPECT_TRUE(attributeText(first().operations[0].node.get(), L"encoding") == encoding) << inside;
    // Asked again, the property is there already.
    parser_.GetServiceInfo(service_, ports_);
    EXPECT_TRUE(attributeText(first().operations[0].node.get(), L"encoding") == encoding) << inside;
  }
  EXPECT_EQ(first().operations[0].output.messageNamespace, L"o");
}

// Any declaration whose value contains the namespace, at the definitions only; "soap" when there is none.
TEST_F(Services, SoapPrefixesAreThoseOfTheDefinitions) {
  const std::pair<const char*, bool> rows[] = {{"xmlns:a='http://schemas.xmlsoap.org/wsdl/soap/'", true},
                                               {"xmlns:A='x-schemas.xmlsoap.org/wsdl/soapy'", true},
                                               {"xmlns:a='http://SCHEMAS.xmlsoap.org/wsdl/soap/'", false}};
  for (const auto& [declaration, found] : rows) {
    parser_.Reset();
    wsdl::parse(parser_, std::string("<definitions targetNamespace='t' ") + declaration +
                             "><service><port binding='B'><address/></port></service><binding name='B'>"
                             "<a:binding transport='x'/></binding></definitions>");
    parser_.GetDefinitionsInfo(service_);
    parser_.GetServiceInfo(service_, ports_);
    EXPECT_EQ(first().transport, found ? L"x" : L"") << declaration;
  }
}

const std::string overloads =
    "<service>" + port("p", "B", "<soap:address/>") + "</service>" +
    binding("B",
            "<operation name='o'><soap:operation soapAction='1'/></operation><operation name='single'/>"
            "<operation name='O'><soap:operation soapAction='2'/></operation>") +
    "<portType name='P'><operation name='o'><input name='i1' message='t:M1'/></operation>"
    "<operation name='o'><input message='t:M2'/><output name='out' message='t:M1'/></operation>"
    "<operation name='single'/></portType>"
    "<message name='M1'><part/></message><message name='M2'/>";

TEST_F(Services, OperationsOfOneNamePairInOrder) {
  read(overloads);
  tovin::Array<CWsdlParser::COperation>& operations = ports_[0].binding.operations;
  parser_.GetOperationInfoFromPortType(L"t:p", operations);
  parser_.GetOperationInfoFromPortType(L"t:p", operations);  // the parts are not there twice
  EXPECT_EQ(operations[0].input.parts.getSize(), 1u);
  EXPECT_EQ(operations[0].input.name, L"M1");
  EXPECT_EQ(operations[0].inputName, L"i1");
  EXPECT_EQ(operations[2].input.name, L"M2");
  EXPECT_EQ(operations[2].output.name, L"M1");
  EXPECT_TRUE(operations[0].outputName.isNull());
  EXPECT_TRUE(operations[0].output.name.isNull());
  EXPECT_EQ(operations[0].input.parts[0].name, L"");
  EXPECT_EQ(operations[0].portTypeName, L"t:P");
  EXPECT_TRUE(parser_.OpHasOverloads(operations[0]));
  EXPECT_FALSE(parser_.OpHasOverloads(operations[2]));  // its name is written in the other case
  EXPECT_FALSE(parser_.OpHasOverloads(operations[1]));
  EXPECT_EQ(trailOf([&] { parser_.OpHasOverloads(CWsdlParser::COperation()); }),
            "CWsdlParser.OpHasOverloads() ");
}

TEST_F(Services, OperationsPairExactlyBeforeTheyPairFolded) {
  readBinding(
      "<operation name='get'><soap:operation soapAction='small'/></operation>"
      "<operation name='GET'><soap:operation soapAction='large'/></operation>"
      "<operation name='Get'><soap:operation soapAction='mixed'/></operation></binding>"
      "<portType name='P'><operation name='Get'/><operation name='gET'/><operation name='GET'/></portType>"
      "<binding name='rest'>");
  tovin::Array<CWsdlParser::COperation>& operations = ports_[0].binding.operations;
  parser_.GetOperationInfoFromPortType(L"P", operations);
  for (const auto& [index, name] : {std::pair(0u, L"gET"), std::pair(1u, L"GET"), std::pair(2u, L"Get")})
    EXPECT_EQ(operations[index].node->getProperties()->find(L"name")->getValue().getText(), name) << index;
}

TEST_F(Services, AnOperationIsFoundByItsMessages) {
  read(overloads);
  using Text = const wchar_t*;
  // Port type, name, input and output, and the action; null: not found.
  const std::tuple<Text, Text, Text, Text, Text> rows[] = {
      {L"T:P", L"o", nullptr, nullptr, L"1"},      {L"t:P", L"O", L"m2", L"M1", L"2"},
      {L"t:P", L"o", L"M1", nullptr, L"1"},        {L"t:P", L"o", L"M1", L"", nullptr},
      {L"P", L"o", nullptr, nullptr, nullptr},     {nullptr, L"o", nullptr, nullptr, nullptr},
      {L"t:P", nullptr, nullptr, nullptr, nullptr}};
  for (const auto& [portType, name, input, output, action] : rows) {
    CWsdlParser::COperation operation;
    EXPECT_EQ(parser_.FindOperation(portType, name, input, output, operation), action != nullptr);
    EXPECT_TRUE(operation.soapAction == action);
  }
}

TEST_F(Services, PortTypesAndMessagesThatAreMissingAreNamed) {
  const std::pair<const char*, const wchar_t*> rows[] = {
      {"<portType name='Q'/>", L"Couldn't find portType"},
      {"<portType name='P'><operation name='x'/></portType>", L"Couldn't find operation"},
      {"<portType name='P'><operation name='o'/><operation name='o'/></portType>",
       L"Couldn't find operation"},
      {"<portType name='P'><operation name='o'><input message='t:N'/></operation></portType>",
       L"Couldn't find message"},
      {"<portType name='P'><operation name='o'><output/></operation></portType>", L"Couldn't find message"}};
  for (const auto& [portType, message] : rows) {
    read(std::string("<message/>") + portType + "<service>" + port("p", "B", "<soap:address/>") +
         "</service>" + binding("B", "<operation name='o'/>"));
    expectMessage(message,
                  [&] { parser_.GetOperationInfoFromPortType(first().type, ports_[0].binding.operations); });
  }
  EXPECT_EQ(trailOf([&] { parser_.GetOperationInfoFromPortType(L"P", ports_[0].binding.operations); }),
            "CWsdlParser.GetMessageInfo CWsdlParser.GetOperationInfoFromPortType ");
}

// One message of many operations, one binding of many ports: small documents that ask for millions of values.
TEST_F(Services, WhatIsSharedWithoutEndIsRefused) {
  std::string parts, operations, inputs, ports;
  for (int i = 0; i < 600; ++i) {
    const std::string number = std::to_string(i);
    parts += "<part/>";
    operations += "<operation name='o" + number + "'/>";
    inputs += "<operation name='o" + number + "'><input message='t:M'/></operation>";
    ports += port("p", "p" + number + ":B", "<soap:address/>");
  }
  const std::string rest = binding("B", operations) + "<portType name='P'>" + inputs + "</portType>";
  read("<service>" + port("p", "B", "<soap:address/>") + "</service><message name='M'>" + parts +
       "</message>" + rest);
  expectMessage(L"Too much is shared, at M",
                [&] { parser_.GetOperationInfoFromPortType(L"P", ports_[0].binding.operations); });
  // A question about one binding, which a subclass may ask, has nothing to do with those before.
  struct Asking : CWsdlParser {
    using CWsdlParser::GetBindingInfo;
  } asking;
  wsdl::parse(asking, wsdl::definitions(rest));
  CWsdlParser::CPort one;
  for (int i = 0; i < 600; ++i) asking.GetBindingInfo(L"B", one);
  EXPECT_EQ(one.binding.operations.getSize(), 600u);
  expectMessage(L"Too much is shared, at p411:B", [&] { read("<service>" + ports + "</service>" + rest); });
}

TEST_F(Services, ValuesOutliveTheReader) {
  CWsdlParser::COperation operation;
  {
    CWsdlParser parser;
    wsdl::parse(parser, wsdl::definitions(overloads));
    ASSERT_TRUE(parser.FindOperation(L"t:P", L"single", nullptr, nullptr, operation));
  }
  EXPECT_EQ(attributeText(operation.node.get(), L"name"), L"single");
  EXPECT_EQ(operation.node->findParent(), nullptr);
}

}  // namespace
