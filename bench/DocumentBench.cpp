// A document of 10 MB into nodes, beside expat alone (the limit) and the trees of two other parsers.
#include <benchmark/benchmark.h>
#include <expat.h>
#include <libxml/parser.h>
#include <malloc.h>

#include <pugixml.hpp>
#include <string>

#include "tovin/Array.h"
#include "ztbaseclient/wsdl/XMLParser.h"

namespace {

constexpr size_t documentSize = 10'000'000;

// Shaped like a service description: schemas with elements, messages with parts, documentation between.
std::string makeDocument(int& elements) {
  std::string text = "<?xml version=\"1.0\"?>\n<wsdl:definitions xmlns:wsdl=\"http://example.org/wsdl\">\n";
  elements = 1;
  for (int i = 0; text.size() < documentSize; ++i) {
    const std::string n = std::to_string(i);
    text += "  <xsd:complexType name=\"Type" + n + "\">\n    <xsd:sequence>\n";
    for (int k = 0; k < 4; ++k) {
      text += "      <xsd:element name=\"member" + std::to_string(k) +
              "\" type=\"xsd:string\" minOccurs=\"0\"/>\n";
    }
    text += "    </xsd:sequence>\n  </xsd:complexType>\n  <wsdl:message name=\"Message" + n +
            "\">\n    <wsdl:documentation>What the message is for, in a few words.</wsdl:documentation>\n    "
            "<wsdl:part name=\"parameters\" element=\"tns:Type" +
            n + "\"/>\n  </wsdl:message>\n";
    elements += 9;
  }
  return text + "</wsdl:definitions>\n";
}

struct Sample {
  Sample() : text(makeDocument(elements)) { bytes.items().assign(text.begin(), text.end()); }
  int elements = 0;
  std::string text;
  tovin::Array<unsigned char> bytes;
};

const Sample& sample() {
  static const Sample only;
  return only;
}

size_t heapInUse() {
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

// Times building alone: each tree is given up outside the clock. The first tree, before any pool is filled,
// tells the memory.
template <class Build, class Release>
void run(benchmark::State& state, Build&& build, Release&& release) {
  sample();
  static double memory = 0;
  if (memory == 0) {
    const size_t before = heapInUse();
    build();
    memory = static_cast<double>(heapInUse() - before) / sample().elements;
    release();
  }
  state.counters["bytes/element"] = memory;
  for (auto _ : state) {
    build();
    state.PauseTiming();
    release();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(sample().text.size()));
}

void DocumentNodes(benchmark::State& state) {
  CWsdlParser::XMLParser parser;
  run(
      state, [&] { benchmark::DoNotOptimize(parser.parse(sample().bytes)); }, [&] { parser.reset(); });
}

void DocumentExpatAlone(benchmark::State& state) {
  XML_Parser parser = nullptr;
  const auto parse = [&] {
    parser = XML_ParserCreate(nullptr);
    XML_SetElementHandler(
        parser, [](void*, const char*, const char**) {}, [](void*, const char*) {});
    XML_SetCharacterDataHandler(parser, [](void*, const char*, int) {});
    benchmark::DoNotOptimize(
        XML_Parse(parser, sample().text.data(), static_cast<int>(sample().text.size()), true));
  };
  run(state, parse, [&] { XML_ParserFree(parser); });
}

void DocumentLibxml2(benchmark::State& state) {
  xmlDoc* document = nullptr;
  const auto parse = [&] {
    document = xmlReadMemory(sample().text.data(), static_cast<int>(sample().text.size()), nullptr, nullptr,
                             XML_PARSE_HUGE | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
  };
  run(state, parse, [&] { xmlFreeDoc(document); });
}

void DocumentPugixml(benchmark::State& state) {
  pugi::xml_document document;
  run(
      state, [&] { document.load_buffer(sample().text.data(), sample().text.size()); },
      [&] { document.reset(); });
}

BENCHMARK(DocumentNodes)->Unit(benchmark::kMillisecond);
BENCHMARK(DocumentExpatAlone)->Unit(benchmark::kMillisecond);
BENCHMARK(DocumentLibxml2)->Unit(benchmark::kMillisecond);
BENCHMARK(DocumentPugixml)->Unit(benchmark::kMillisecond);

}  // namespace
