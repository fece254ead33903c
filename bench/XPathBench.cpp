// Path queries over a tree of 100,000 nodes, beside two other engines in the same process. All queries are
// compiled beforehand; every answer is checked against the expected number.
#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/xpath.h>

#include <pugixml.hpp>
#include <string>

#include "tovin/Ptr.h"
#include "tovin/iNode.h"
#include "ztbaseclient/wsdl/XMLParser.h"
#include "ztcore/ztMemoryStreams.h"

namespace {

constexpr int jobs = 2000;
constexpr int stepsOfJob = 16;
constexpr int partsOfStep = 2;

// jobs * (1 + 1 + 16 * 3) + 1 elements.
std::string makeDocument() {
  std::string xml = "<store>";
  for (int job = 0; job < jobs; ++job) {
    xml += "<job id='j" + std::to_string(job) + "' owner='user" + std::to_string(job % 50) +
           "'><info kind='k" + std::to_string(job % 7) + "'/>";
    for (int step = 0; step < stepsOfJob; ++step) {
      xml += "<step n='" + std::to_string(step) + "' state='" +
             (step == job % stepsOfJob ? "failed" : "done") + "'>";
      for (int part = 0; part < partsOfStep; ++part)
        xml += "<part size='" + std::to_string(job + part) + "'/>";
      xml += "</step>";
    }
    xml += "</job>";
  }
  return xml + "</store>";
}

struct Documents {
  Documents() {
    const std::string xml = makeDocument();
    ztMemoryByteInputStream stream(xml.data(), xml.size());
    root = parser.parse(stream);
    pugi.load_string(xml.c_str());
    libxml = xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "", nullptr, XML_PARSE_HUGE);
  }
  CWsdlParser::XMLParser parser;
  tovin::iNode* root;
  pugi::xml_document pugi;
  xmlDoc* libxml;
};

const Documents& documents() {
  static const Documents documents;
  return documents;
}

struct Query {
  const char* name;
  const char* text;
  double expected;
};

constexpr Query queries[] = {
    {"childPath", "count(/store/job/step)", 32000},
    {"anywhere", "count(//part)", 64000},
    {"anywhereThenChild", "count(//step/part)", 64000},
    {"attributeEquals", "count(//step[@state='failed'])", 2000},
    {"attributePath", "count(/store/job[@owner='user7']/@id)", 40},
    {"position", "count(/store/job/step[5])", 2000},
    {"last", "count(/store/job/step[last()])", 2000},
    {"deepPosition", "count(/store/job[1500]/step[3]/part)", 2},
    {"everyElement", "count(//*)", 100001},
    {"sum", "sum(//part/@size)", 64000000},
    {"union", "count(//info | //step[@n='1'])", 4000},
    {"nestedPredicate", "count(//job[step/@state='failed'])", 2000},
    {"stringFunctions", "count(//job[starts-with(@id,'j1') and contains(@owner,'er1')])", 253},
    {"parents", "count(//part[@size='77']/..)", 32},
    {"anywhereFirst", "count(//step[1])", 2000},
    {"twiceAnywhere", "count(//job//part)", 64000},
    {"sibling", "count(//info/following-sibling::step[@n='3'])", 2000},
};

void check(benchmark::State& state, double found, double expected) {
  if (found != expected) state.SkipWithError(("wrong answer: " + std::to_string(found)).c_str());
}

void ours(benchmark::State& state, const Query& query) {
  const std::wstring text(query.text, query.text + std::char_traits<char>::length(query.text));
  const tovin::iNode& root = *documents().root;
  int found = 0;
  for (auto _ : state) root.query(text.c_str(), 0, found);
  check(state, found, query.expected);
}

void pugixml(benchmark::State& state, const Query& query) {
  const pugi::xpath_query compiled(query.text);
  double found = 0;
  for (auto _ : state) found = compiled.evaluate_number(documents().pugi);
  check(state, found, query.expected);
}

void libxml2(benchmark::State& state, const Query& query) {
  xmlXPathContext* context = xmlXPathNewContext(documents().libxml);
  xmlXPathCompExpr* compiled = xmlXPathCompile(reinterpret_cast<const xmlChar*>(query.text));
  double found = 0;
  for (auto _ : state) {
    xmlXPathObject* result = xmlXPathCompiledEval(compiled, context);
    found = result->floatval;
    xmlXPathFreeObject(result);
  }
  xmlXPathFreeCompExpr(compiled);
  xmlXPathFreeContext(context);
  check(state, found, query.expected);
}

// A hierarchical name costs its own steps only, however large the tree.
void findByPath(benchmark::State& state) {
  tovin::iPropertyCollection* properties = documents().root->getProperties();
  for (auto _ : state) benchmark::DoNotOptimize(properties->find(L"/store/job/id"));
  check(state, properties->find(L"/store/job[3]/id") ? 1 : 0, 1);
}

using Body = void (*)(benchmark::State&, const Query&);
struct Engine {
  const char* name;
  Body body;
};
constexpr Engine engines[] = {{"ours", ours}, {"pugixml", pugixml}, {"libxml2", libxml2}};

const bool registered = [] {
  for (const Query& query : queries) {
    for (const Engine& engine : engines) {
      const std::string name = std::string("xpath/") + query.name + "/" + engine.name;
      benchmark::RegisterBenchmark(name.c_str(), engine.body, query)->Unit(benchmark::kMicrosecond);
    }
  }
  benchmark::RegisterBenchmark("xpath/findByPath", findByPath);
  return true;
}();

}  // namespace
