// Reading WSDL documents of a given number of operations: the answers must grow with the document, no faster.
// 2.5 types to an operation, as in real services.
#include <benchmark/benchmark.h>
#include <expat.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "ztbaseclient/wsdl/CCustomType.h"
#include "ztbaseclient/wsdl/CPort.h"

namespace {

using Bytes = tovin::Array<unsigned char>;

std::string types(int count) {
  std::string text = "<types><xs:schema targetNamespace='urn:t' elementFormDefault='qualified'>";
  for (int i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    text += "<xs:complexType name='Type" + number + "'><xs:sequence><xs:element name='id' type='xs:long'/>";
    text += "<xs:element name='label' type='xs:string' minOccurs='0'/><xs:element name='next' type='t:Type";
    text += std::to_string((i + 1) % count) + "' minOccurs='0' maxOccurs='unbounded'/></xs:sequence>";
    text += "</xs:complexType><xs:element name='e" + number + "' type='t:Type" + number + "'/>";
  }
  return text + "</xs:schema></types>";
}

std::string message(const std::string& name, int element) {
  return "<message name='" + name + "'><part name='p' element='t:e" + std::to_string(element) +
         "'/></message>";
}

Bytes document(int operations) {
  std::string text =
      "<definitions xmlns='http://schemas.xmlsoap.org/wsdl/' "
      "xmlns:soap='http://schemas.xmlsoap.org/wsdl/soap/' "
      "xmlns:xs='http://www.w3.org/2001/XMLSchema' xmlns:t='urn:t' targetNamespace='urn:t'>" +
      types(operations * 5 / 2);
  std::string portType = "<portType name='P'>";
  std::string binding = "<binding name='B' type='t:P'><soap:binding transport='x'/>";
  for (int i = 0; i < operations; ++i) {
    const std::string number = std::to_string(i);
    text += message("In" + number, i) + message("Out" + number, i + operations);
    portType += "<operation name='op" + number + "'><input message='t:In" + number +
                "'/><output message='t:Out" + number + "'/></operation>";
    binding +=
        "<operation name='op" + number + "'><soap:operation soapAction='urn:op" + number +
        "'/><input><soap:body use='literal'/></input><output><soap:body use='literal'/></output></operation>";
  }
  text += portType + "</portType>" + binding + "</binding><service name='S'><port name='p' binding='t:B'>";
  text += "<soap:address location='http://localhost/'/></port></service></definitions>";
  return Bytes(std::vector<unsigned char>(text.begin(), text.end()));
}

void load(CWsdlParser& parser, const Bytes& bytes) {
  tovin::WideString target;
  parser.Parse(bytes);
  parser.GetDefinitionsInfo(target);
}

// Everything about the service, down to the parts.
tovin::Array<CWsdlParser::CPort> readService(CWsdlParser& parser) {
  tovin::WideString name;
  tovin::Array<CWsdlParser::CPort> ports;
  parser.GetServiceInfo(name, ports);
  for (CWsdlParser::CPort& port : ports) {
    parser.GetOperationInfoFromPortType(port.binding.type, port.binding.operations);
  }
  return ports;
}

void count(benchmark::State& state, const Bytes& bytes) {
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes.getSize()));
}

void BM_ServiceInfo(benchmark::State& state) {
  const Bytes bytes = document(static_cast<int>(state.range(0)));
  CWsdlParser parser;
  load(parser, bytes);
  for (auto _ : state) benchmark::DoNotOptimize(readService(parser));
  count(state, bytes);
}
BENCHMARK(BM_ServiceInfo)->Arg(200)->Arg(2000)->Unit(benchmark::kMillisecond);

void BM_SchemaInfo(benchmark::State& state) {
  const Bytes bytes = document(static_cast<int>(state.range(0)));
  CWsdlParser parser;
  for (auto _ : state) {
    state.PauseTiming();
    parser.Reset();
    load(parser, bytes);
    state.ResumeTiming();
    benchmark::DoNotOptimize(parser.GetSchemaInfo().getSize());
  }
  count(state, bytes);
}
BENCHMARK(BM_SchemaInfo)->Arg(200)->Arg(2000)->Unit(benchmark::kMillisecond);

void BM_ResolveAllParts(benchmark::State& state) {
  const Bytes bytes = document(static_cast<int>(state.range(0)));
  CWsdlParser parser;
  load(parser, bytes);
  const tovin::Array<CWsdlParser::CPort> ports = readService(parser);
  parser.GetSchemaInfo();
  CWsdlParser::CCustomType type;
  for (auto _ : state) {
    for (const CWsdlParser::COperation& operation : ports[0].binding.operations) {
      parser.GetCustomTypeInfoDoc(operation.input.parts[0], type);
      parser.GetCustomTypeInfoDoc(operation.output.parts[0], type);
    }
  }
  count(state, bytes);
}
BENCHMARK(BM_ResolveAllParts)->Arg(200)->Arg(2000)->Unit(benchmark::kMillisecond);

void BM_Load(benchmark::State& state) {
  const Bytes bytes = document(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    CWsdlParser parser;
    parser.Parse(bytes);
  }
  count(state, bytes);
}
BENCHMARK(BM_Load)->Arg(200)->Arg(2000)->Unit(benchmark::kMillisecond);

void ignoreStart(void*, const char*, const char**) {}
void ignoreEnd(void*, const char*) {}

// What loading cannot undercut: the same events, and nothing done with them.
void BM_ExpatWithEmptyHandlers(benchmark::State& state) {
  const Bytes bytes = document(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    XML_Parser expat = XML_ParserCreate(nullptr);
    XML_SetElementHandler(expat, ignoreStart, ignoreEnd);
    const auto* text = reinterpret_cast<const char*>(bytes.data());
    if (XML_Parse(expat, text, static_cast<int>(bytes.getSize()), true) != XML_STATUS_OK)
      throw std::runtime_error("not well-formed");
    XML_ParserFree(expat);
  }
  count(state, bytes);
}
BENCHMARK(BM_ExpatWithEmptyHandlers)->Arg(200)->Arg(2000)->Unit(benchmark::kMillisecond);

}  // namespace
