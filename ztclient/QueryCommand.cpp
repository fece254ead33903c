// ztclient query: what a path query selects in an XML document or a node record.
#include <algorithm>
#include <iostream>
#include <memory>

#include "tovinCore/Utf8.h"
#include "ztbaseclient/data/NodeLocations.h"
#include "ztclient/Commands.h"
#include "ztclient/input/Document.h"

namespace {

// Selected elements and the owners of selected attributes.
constexpr unsigned eitherKind = 3;

struct Options {
  std::string file;
  std::string expression;
  std::string expressionFile;
  std::string as = "nodes";
};

std::string expressionOf(const Options& options) {
  if (options.expressionFile.empty()) return options.expression;
  std::string text = readBytes(options.expressionFile);
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  if (text.find('\0') != text.npos) throw tovin::Exception(L"The expression file holds a NUL character");
  return text;
}

const tovin::iNode& ownerOf(const tovin::iProperty& property) {
  return *tovin::seek<tovin::iNode>(property.getParent()->findOwner());
}

bool printNodes(const Document& document, const wchar_t* expression) {
  tovin::NodeReferenceSet nodes;
  const bool any = document.root->query(expression, eitherKind, nodes);
  NodeLocations locations;
  for (size_t i = 0; i < nodes.getSize(); ++i) std::cout << document.utf8(locations.get(*nodes[i])) << '\n';
  return any;
}

bool printProperties(const Document& document, const wchar_t* expression) {
  tovin::PropertyReferenceSet properties;
  const bool any = document.root->query(expression, eitherKind, properties);
  NodeLocations locations;
  for (size_t i = 0; i < properties.getSize(); ++i) {
    const tovin::iProperty& property = *properties[i];
    std::cout << document.utf8(locations.get(ownerOf(property))) << '@' << document.utf8(property.getName())
              << '\t' << document.utf8(property.getValue().getText()) << '\n';
  }
  return any;
}

bool printString(const Document& document, const wchar_t* expression) {
  tovin::WideString text;
  if (!document.root->query(expression, eitherKind, text)) return false;
  std::cout << document.utf8(text) << '\n';
  return true;
}

bool printInteger(const Document& document, const wchar_t* expression) {
  int number = 0;
  if (!document.root->query(expression, eitherKind, number)) return false;
  std::cout << number << '\n';
  return true;
}

bool printTruth(const Document& document, const wchar_t* expression) {
  bool truth = false;
  document.root->query(expression, eitherKind, truth);
  std::cout << (truth ? "true" : "false") << '\n';
  return truth;
}

using Print = bool (*)(const Document& document, const wchar_t* expression);
const std::map<std::string, Print> printers = {{"nodes", printNodes},
                                               {"properties", printProperties},
                                               {"string", printString},
                                               {"int", printInteger},
                                               {"bool", printTruth}};

int run(const Options& options) {
  if (options.file == "-" && options.expressionFile == "-") {
    throw tovin::Exception(L"The document and the query cannot both be standard input");
  }
  const std::string expression = expressionOf(options);
  const Document document = readDocument(options.file);
  if (!document.root) throw tovin::Exception(L"There is no document in the file");
  const std::wstring query = document.wide(expression);
  return printers.at(options.as)(document, query.c_str()) ? commands::done : commands::negative;
}

}  // namespace

void commands::addQuery(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* query = app.add_subcommand("query", "Run a path query on an XML document or a node record");
  query->add_option("FILE", options->file, "XML document or node record; - for standard input")->required();
  CLI::Option* text = query->add_option("XPATH", options->expression, "The query");
  CLI::Option* file =
      query->add_option("--expression-file", options->expressionFile, "Take the query from this file");
  text->excludes(file);
  query->add_option("--as", options->as, "What to print: nodes, properties, string, int or bool")
      ->check(CLI::IsMember({"nodes", "properties", "string", "int", "bool"}))
      ->capture_default_str();
  query->footer("Example: ztclient query job.xml \"/job/step[@state='failed']\"");
  query->callback([options, text, file, &status] {
    if (text->count() + file->count() == 0) throw CLI::RequiredError("XPATH or --expression-file");
    status = run(*options);
  });
}
