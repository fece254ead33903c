#include <gtest/gtest.h>

#include "tests/ztservice/Answers.h"

using testsupport::answerOf;
using testsupport::loadFiles;

namespace {

// Definitions whose binding and port type have these operations.
std::string definitions(const std::string& binding, const std::string& portType,
                        const std::string& extension) {
  return R"(<definitions xmlns="http://schemas.xmlsoap.org/wsdl/" xmlns:t="urn:t" targetNamespace="urn:t"
 xmlns:s="http://schemas.xmlsoap.org/wsdl/soap/" xmlns:s12="http://schemas.xmlsoap.org/wsdl/soap12/" xmlns:xs="http://www.w3.org/2001/XMLSchema"
 xmlns:h="http://schemas.xmlsoap.org/wsdl/http/" xmlns:m="http://schemas.xmlsoap.org/wsdl/mime/" xmlns:w="http://www.w3.org/2006/05/addressing/wsdl">
<types><xs:schema targetNamespace="urn:t"><xs:element name="e" type="xs:int"/><xs:element name="bad" type="t:gone"/><xs:element name="x"><xs:simpleType/></xs:element></xs:schema></types>
<message name="m"><part name="a" type="xs:int"/><part name="b" element="t:e"/><part name="c" type="xs:date"/></message>
<message name="f"><part name="d"/><part name="e" element="t:bad"/><part name="g" element="t:x"/><part name="h" type="q:r"/><part name="i" type="t:e" element="t:e"/></message>
<portType name="P">)" +
         portType + R"(</portType><binding name="B" type="P">)" + extension + binding + R"(</binding>
<service name="S"><port name="p" binding="q:B"><x:address xmlns:x="urn:x" location=" here "/></port></service></definitions>)";
}

const std::string soap = "<s:binding style=' rpc ' transport='http://t'/>";

std::string text(const Json& json, const char* key) { return json[key].get<std::string>(); }

std::string partsOf(const Json& parts) {
  std::string out;
  for (const Json& part : parts) {
    out += ' ' + text(part, "name") + ':' + text(part, "element") + '/' + text(part, "type") +
           (part.contains("error") ? "!" : "");
  }
  return out;
}

std::string messageOf(const Json& message) {
  if (message.is_null()) return "none";
  std::string out = text(message, "name");
  for (const char* key : {"action", "use", "encodingStyle", "namespace", "content"})
    out += ',' + text(message, key);
  out += partsOf(message["parts"]);
  for (const Json& header : message["headers"]) {
    out += " ^" + text(header, "message") + ',' + text(header, "use") + ',' + text(header, "namespace");
    if (!header["part"].is_null()) out += partsOf(Json::array({header["part"]}));
    out += header.contains("error") ? "!" : "";
  }
  for (const Json& one : message["attachments"])
    out += " +" + partsOf(Json::array({one["part"]})) + one["types"].dump();
  return out + (message.contains("error") ? "!" : "");
}

// The operations of the port, each in one line.
std::string told(const std::string& document) {
  const Json port = answerOf(loadFiles({{"main.wsdl", document}}))["services"][0]["ports"][0];
  EXPECT_EQ(text(port, "address"), "here");
  std::string out = text(port, "protocol") + (port.contains("error") ? "!" : "") + '\n';
  for (const Json& operation : port["operations"]) {
    out += text(operation, "name") + ' ' + text(operation, "style") + ' ' + text(operation, "soapAction") +
           text(operation, "location");
    for (const Json& word : operation["parameterOrder"]) out += ' ' + word.get<std::string>();
    out += operation.contains("error") ? "!\n" : "\n";
    if (!operation["input"].is_null()) out += "  < " + messageOf(operation["input"]) + '\n';
    if (!operation["output"].is_null()) out += "  > " + messageOf(operation["output"]) + '\n';
    for (const Json& fault : operation["faults"]) {
      out += "  ! " + text(fault, "name") + ',' + text(fault, "use") + partsOf(fault["parts"]) +
             (fault.contains("error") ? "!\n" : "\n");
    }
  }
  return out;
}

struct Case {
  const char* name;
  std::string document;
  const char* expected;
};

TEST(Operations, AreThoseOfTheBindingWithWhatThePortTypeSays) {
  const std::string both = "<input message='t:m'/><output message='t:m'/>";
  const std::vector<Case> cases = {
      {"bodies, headers and faults",
       definitions("<operation name='o'><s:operation soapAction=' urn:a ' style='other'/><input><s:header "
                   "message='m' part='a' use='encoded' namespace='urn:h'/>"
                   "<s12:header message='t:f' part='d'/><s:header message='t:f' part='no'/><s:header "
                   "message='no' part='d'/><s:body namespace='urn:w' encodingStyle='urn:e'/></input>"
                   "<output><s:body parts='c a no' use='encoded'/><s:header message='t:m' "
                   "part='b'/></output><fault name='F'><s:fault name='F'/></fault></operation>",
                   "<operation name='o' parameterOrder=' b  a'><input message='t:m' "
                   "w:Action='urn:in'/><output message='t:m' Action='no' name=' out '/>"
                   "<fault name='F' message='f'/><fault name='G' message='no'/></operation>",
                   soap),
       "soap11\no rpc urn:a b a\n"
       "  < oRequest,urn:in,literal,urn:e,urn:w, b:e/int c:/date ^m,encoded,urn:h a:/int ^f,literal, d:/! "
       "^f,literal,! ^,literal,!\n"
       "  > out,,encoded,,, a:/int c:/date ^m,literal, b:e/int\n"
       "  ! F,literal d:/! e:bad/! g:x/ h:/! i:e/int\n  ! G,!\n"},
      {"names that are not written, and operations of one side only",
       definitions("<operation name='in'/><operation name='out'/><operation "
                   "name='solicit'><input/></operation><operation name='none'/>",
                   "<operation name='in'><input message='m'/></operation><operation name='out'><output "
                   "message='no'/></operation>"
                   "<operation name='solicit'><output message='t:m'/><input "
                   "message='t:m'/></operation><operation name='unbound'/>",
                   soap),
       "soap11\nin rpc \n  < in,,,,, a:/int b:e/int c:/date\nout rpc \n  > out,,,,,!\n"
       "solicit rpc \n  < solicitResponse,,,,, a:/int b:e/int c:/date\n  > solicitSolicit,,,,, a:/int "
       "b:e/int c:/date\nnone rpc !\n"},
      {"overloads go by the names of input and output, then by order",
       definitions("<operation name='o'><input name='two'/></operation><operation name='o'><input "
                   "name='nothing'/></operation><operation name='o'/><operation name='o'><output "
                   "name='r'/></operation>",
                   "<operation name='o'><input name='one' message='m'/></operation><operation "
                   "name='o'><input name='two' message='m'/></operation>"
                   "<operation name='o'><input name='three' message='m'/></operation><operation "
                   "name='o'><output name='r' message='m'/></operation>",
                   "<s12:binding/>"),
       "soap12\no document \n  < two,,,,, a:/int b:e/int c:/date\no document \n  < one,,,,, a:/int b:e/int "
       "c:/date\n"
       "o document \n  < three,,,,, a:/int b:e/int c:/date\no document \n  > r,,,,, a:/int b:e/int "
       "c:/date\n"},
      {"attachments",
       definitions("<operation name='o'><input><m:multipartRelated><m:part><s:header message='t:m' "
                   "part='b'/><s:body/></m:part><m:part><m:content part='c' type='image/gif'/>"
                   "<m:content part='c' type='image/png'/><m:content part='no' "
                   "type='x/y'/></m:part></m:multipartRelated></input><output><s:body parts=''/><m:content "
                   "part='a'/></output></operation>",
                   "<operation name='o'>" + both + "</operation>", soap),
       "soap11\no rpc \n  < oRequest,,literal,,, a:/int ^m,literal, b:e/int + "
       "c:/date[\"image/gif\",\"image/png\"]\n  > oResponse,,literal,,, + a:/int[]\n"},
      {"HTTP",
       definitions("<operation name='o'><h:operation location=' /o '/><s:operation "
                   "soapAction='no'/><input><h:urlEncoded/></input><output><m:mimeXml/><m:content part='a' "
                   "type='a/b'/></output></operation>",
                   "<operation name='o'>" + both + "</operation>", "<h:binding verb='GET'/>"),
       "http\no  /o\n  < oRequest,,,,,urlEncoded a:/int b:e/int c:/date\n  > oResponse,,,,,text/xml a:/int "
       "b:e/int c:/date\n"},
      {"neither SOAP nor HTTP",
       definitions("<operation name='o'><s:operation soapAction='no'/></operation>", "<operation name='o'/>",
                   ""),
       "other\no  \n"},
  };
  for (const Case& one : cases) {
    std::string expected = one.expected;
    EXPECT_EQ(told(one.document), expected) << one.name;
  }
}

}  // namespace
