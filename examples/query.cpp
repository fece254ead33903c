// A path query on a tree that was read from XML. Exit status 1: nothing was selected.
//
//     example_query "/jobs/job[step/@state='failed']/@id"
#include <iostream>
#include <string_view>

#include "tovinCore/Utf8.h"
#include "ztbaseclient/ztbaseclient.h"
#include "ztcore/ztMemoryStreams.h"

namespace {

constexpr std::string_view document = R"(<?xml version="1.0"?>
<jobs>
  <job id="4711"><step state="finished" seconds="2.5"/><step state="finished" seconds="40"/></job>
  <job id="4712"><step state="finished" seconds="3.5"/><step state="failed" seconds="1"/></job>
</jobs>)";

tovin::Ptr<tovin::iNode> read() {
  ztMemoryByteInputStream stream(document.data(), document.size());
  CWsdlParser::XMLParser parser;
  return parser.parse(stream);
}

bool run(const tovin::iNode& jobs, const std::wstring& query) {
  tovin::PropertyReferenceSet found;
  jobs.query(query.c_str(), tovin::iXPathParser::elements, found);
  for (size_t i = 0; i < found.getSize(); ++i) {
    std::cout << tovin::wideToUtf8(found[i]->getName()) << " = "
              << tovin::wideToUtf8(found[i]->getValue().getText()) << '\n';
  }

  // The same interface computes: here the mean over all steps, as text.
  tovin::WideString mean;
  jobs.query(L"sum(//step/@seconds) div count(//step)", tovin::iXPathParser::elements, mean);
  std::cout << "a step takes " << tovin::wideToUtf8(mean.view()) << " seconds\n";
  return found.getSize() > 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: example_query XPATH\n";
    return 2;
  }
  try {
    return run(*read(), tovin::utf8ToWide(argv[1])) ? 0 : 1;
  } catch (const tovin::Exception& e) {
    std::cerr << e.what() << '\n';  // a query that is none is told with the position of its fault
    return 2;
  }
}
