#include "tests/ztservice/Services.h"

#include <utility>

namespace testsupport {

namespace {

ztservice::Options reading(const Files& files, ztservice::Options options) {
  options.readFile = [&](const std::string& path, std::string& bytes) {
    const auto found = files.find(path);
    bytes = found == files.end() ? "No such file or directory" : found->second;
    return found != files.end();
  };
  return options;
}

}  // namespace

ztservice::Service loadFiles(const Files& files, ztservice::Options options) {
  return ztservice::load("main.wsdl", reading(files, std::move(options)));
}

std::string flatten(const Files& files) { return ztservice::flatten("main.wsdl", reading(files, {})); }

std::string definitionsOf(const std::string& schema, const std::string& attributes) {
  return R"(<wsdl:definitions xmlns:wsdl="http://schemas.xmlsoap.org/wsdl/" targetNamespace="urn:t" xmlns:t="urn:t"
 xmlns:s="http://schemas.xmlsoap.org/wsdl/soap/" xmlns:xs="http://www.w3.org/2001/XMLSchema"
 xmlns:enc="http://schemas.xmlsoap.org/soap/encoding/" xmlns:enc12="http://www.w3.org/2003/05/soap-encoding">
<wsdl:types><xs:schema targetNamespace="urn:t" )" +
         attributes + '>' + schema + R"(</xs:schema></wsdl:types>
<wsdl:message name="m"><wsdl:part name="p" type="t:T"/></wsdl:message>
<wsdl:portType name="P"><wsdl:operation name="o"><wsdl:input message="t:m"/></wsdl:operation></wsdl:portType>
<wsdl:binding name="B" type="t:P"><s:binding/><wsdl:operation name="o"><wsdl:input><s:body/></wsdl:input>
</wsdl:operation></wsdl:binding>
<wsdl:service name="S"><wsdl:port name="p" binding="t:B"/></wsdl:service></wsdl:definitions>)";
}

}  // namespace testsupport
