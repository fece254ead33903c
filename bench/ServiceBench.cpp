// Whole services: all real documents, and a made-up service of so many operations
// over many schema files; beside expat alone on the same bytes. The cost must grow with the service, no
// faster.
#include <benchmark/benchmark.h>
#include <expat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "ztservice/Service.h"

namespace {

using Files = std::map<std::string, std::string>;

std::string schemaFile(int number, int files, int types) {
  const std::string own = "urn:t" + std::to_string(number);
  const std::string other = std::to_string((number + 1) % files);
  std::string text = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' xmlns:o='urn:t" + other +
                     "' xmlns:t='" + own + "' targetNamespace='" + own +
                     "' elementFormDefault='qualified'><xs:import namespace='urn:t" + other +
                     "' schemaLocation='s" + other + ".xsd'/>";
  for (int i = 0; i < types; ++i) {
    const std::string name = std::to_string(i);
    text +=
        "<xs:complexType name='Type" + name +
        "'><xs:sequence><xs:element name='id' type='xs:long'/>"
        "<xs:element name='label' type='xs:string' minOccurs='0'/><xs:choice><xs:element name='next' "
        "type='o:Type" +
        name +
        "' minOccurs='0' maxOccurs='unbounded'/><xs:element name='flag' "
        "type='xs:boolean'/></xs:choice></xs:sequence>"
        "<xs:attribute name='version' type='xs:int' use='required'/></xs:complexType><xs:element name='e" +
        name + "' type='t:Type" + name + "'/>";
  }
  return text + "</xs:schema>";
}

// Ten operations for each schema file.
Files madeUp(int operations) {
  const int files = std::max(1, operations / 10);
  Files out;
  std::string text =
      "<definitions xmlns='http://schemas.xmlsoap.org/wsdl/' "
      "xmlns:soap='http://schemas.xmlsoap.org/wsdl/soap/'"
      " xmlns:xs='http://www.w3.org/2001/XMLSchema' xmlns:w='urn:w' "
      "targetNamespace='urn:w'><types><xs:schema>";
  std::string messages;
  std::string portType;
  std::string binding;
  for (int file = 0; file < files; ++file) {
    const std::string name = std::to_string(file);
    out["s" + name + ".xsd"] = schemaFile(file, files, 25);
    text += "<xs:import namespace='urn:t" + name + "' schemaLocation='s" + name + ".xsd'/>";
    for (int i = 0; i < 10; ++i) {
      const std::string number = name + '_' + std::to_string(i);
      messages += "<message name='m" + number + "'><part name='p' xmlns:t='urn:t" + name + "' element='t:e" +
                  std::to_string(i) + "'/></message>";
      portType += "<operation name='o" + number + "'><input message='w:m" + number +
                  "'/><output message='w:m" + number + "'/></operation>";
      binding += "<operation name='o" + number +
                 "'><soap:operation soapAction='a'/><input><soap:body "
                 "use='literal'/></input><output><soap:body use='literal'/></output></operation>";
    }
  }
  out["main.wsdl"] = text + "</xs:schema></types>" + messages + "<portType name='P'>" + portType +
                     "</portType><binding name='B' type='w:P'><soap:binding transport='x'/>" + binding +
                     "</binding><service name='S'><port name='p' binding='w:B'><soap:address "
                     "location='http://localhost/'/></port></service></definitions>";
  return out;
}

size_t bytesOf(const Files& files) {
  size_t bytes = 0;
  for (const auto& [name, text] : files) bytes += text.size();
  return bytes;
}

void read(const Files& files, const std::string& document) {
  ztservice::Options options;
  options.readFile = [&](const std::string& path, std::string& bytes) {
    const auto found = files.find(path);
    if (found == files.end()) return false;
    bytes = found->second;
    return true;
  };
  benchmark::DoNotOptimize(ztservice::load(document, options).types().size());
}

void parseOnly(const Files& files) {
  for (const auto& [name, text] : files) {
    XML_Parser parser = XML_ParserCreateNS(nullptr, '\n');
    XML_SetElementHandler(
        parser, [](void*, const char*, const char**) {}, [](void*, const char*) {});
    if (XML_Parse(parser, text.data(), static_cast<int>(text.size()), 1) != XML_STATUS_OK)
      throw std::runtime_error("no XML");
    XML_ParserFree(parser);
  }
}

// Every file of the real services, and those that begin one.
struct Real {
  Files files;
  std::vector<std::string> documents;
};

const Real& real() {
  static const Real all = [] {
    Real out;
    const std::filesystem::path folder = ZTB_BENCH_SERVICES;
    std::ifstream table(folder / "services.txt");
    for (std::string name, document; std::getline(table, name, '\t') && std::getline(table, document);) {
      if (name != "no-definitions") out.documents.push_back(name + '/' + document);
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder / "documents")) {
      if (!entry.is_regular_file() || entry.path().string().find("no-definitions") != std::string::npos)
        continue;
      std::ifstream in(entry.path(), std::ios::binary);
      out.files[entry.path().lexically_relative(folder / "documents").generic_string()] =
          std::string(std::istreambuf_iterator<char>(in), {});
    }
    return out;
  }();
  return all;
}

void BM_MadeUp(benchmark::State& state) {
  const Files files = madeUp(static_cast<int>(state.range(0)));
  for ([[maybe_unused]] auto _ : state) read(files, "main.wsdl");
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytesOf(files)));
  state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_MadeUp)->RangeMultiplier(4)->Range(125, 2000)->Unit(benchmark::kMillisecond)->Complexity();

void BM_MadeUpExpatAlone(benchmark::State& state) {
  const Files files = madeUp(static_cast<int>(state.range(0)));
  for ([[maybe_unused]] auto _ : state) parseOnly(files);
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytesOf(files)));
}
BENCHMARK(BM_MadeUpExpatAlone)->Arg(2000)->Unit(benchmark::kMillisecond);

void BM_Real(benchmark::State& state) {
  for ([[maybe_unused]] auto _ : state) {
    for (const std::string& document : real().documents) read(real().files, document);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytesOf(real().files)));
}
BENCHMARK(BM_Real)->Unit(benchmark::kMillisecond);

void BM_RealExpatAlone(benchmark::State& state) {
  for ([[maybe_unused]] auto _ : state) parseOnly(real().files);
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytesOf(real().files)));
}
BENCHMARK(BM_RealExpatAlone)->Unit(benchmark::kMillisecond);

}  // namespace
