// ztclient query: what a path query selects in an XML document or a node record.
#include <algorithm>
#include <climits>
#include <iostream>
#include <memory>

#include "tovinCore/Numbers.h"
#include "tovinCore/Units.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/data/NodeLocations.h"
#include "ztclient/Commands.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/input/Document.h"
#include "ztclient/input/InputFile.h"

namespace {

// Selected elements and the owners of selected attributes.
constexpr unsigned eitherKind = 3;

struct Options {
  std::string file;
  std::string expression;
  std::string expressionFile;
  std::string as;
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

// A text, or a part of one: surrogates that lost their other half become U+FFFD.
std::string utf8(std::wstring text) {
  for (size_t i = 0; i < text.size(); ++i) {
    const auto unit = static_cast<char16_t>(text[i]);
    const bool paired = tovin::isHighSurrogate(unit) && i + 1 < text.size() &&
                        tovin::isLowSurrogate(static_cast<char16_t>(text[i + 1]));
    if (paired)
      ++i;
    else if (static_cast<uint32_t>(text[i]) >> 16 == 0 &&
             (tovin::isHighSurrogate(unit) || tovin::isLowSurrogate(unit)))
      text[i] = L'\uFFFD';
  }
  return tovin::wideToUtf8(text);
}

std::string utf8(const wchar_t* text) { return text ? utf8(std::wstring(text)) : std::string(); }

std::string utf8(const tovin::WideString& text) { return utf8(std::wstring(text.view())); }

bool printNodes(const tovin::iNode& root, const wchar_t* expression) {
  tovin::NodeReferenceSet nodes;
  const bool any = root.query(expression, eitherKind, nodes);
  NodeLocations locations;
  for (size_t i = 0; i < nodes.getSize(); ++i) std::cout << utf8(locations.get(*nodes[i])) << '\n';
  return any;
}

bool printProperties(const tovin::iNode& root, const wchar_t* expression) {
  tovin::PropertyReferenceSet properties;
  const bool any = root.query(expression, eitherKind, properties);
  NodeLocations locations;
  for (size_t i = 0; i < properties.getSize(); ++i) {
    const tovin::iProperty& property = *properties[i];
    std::cout << utf8(locations.get(ownerOf(property))) << '@' << utf8(property.getName()) << '\t'
              << utf8(property.getValue().getText()) << '\n';
  }
  return any;
}

bool printString(const tovin::iNode& root, const wchar_t* expression) {
  tovin::WideString text;
  if (!root.query(expression, eitherKind, text)) return false;
  std::cout << utf8(text) << '\n';
  return true;
}

// The query gives the nearest integer; its text tells whether that is far away.
void requireInteger(const tovin::iNode& root, const wchar_t* expression) {
  tovin::WideString text;
  double exact = 0;
  root.query(expression, eitherKind, text);
  const bool finite = tovin::util::tryStringToDouble(text.view(), exact);
  if (finite && exact > INT_MIN - 1.0 && exact < INT_MAX + 1.0) return;
  throw tovin::Exception(L"%ls is out of range, an integer is from %d to %d", text, INT_MIN, INT_MAX);
}

bool printInteger(const tovin::iNode& root, const wchar_t* expression) {
  int number = 0;
  if (!root.query(expression, eitherKind, number)) return false;
  if (number == INT_MAX || number == INT_MIN) requireInteger(root, expression);
  std::cout << number << '\n';
  return true;
}

bool printTruth(const tovin::iNode& root, const wchar_t* expression) {
  bool truth = false;
  root.query(expression, eitherKind, truth);
  std::cout << (truth ? "true" : "false") << '\n';
  return truth;
}

// Whether the expression is one of a text, a number or a truth, and its text. Of a node set and of what is no
// query the question for nodes has said what there is to say.
bool isValue(const tovin::iNode& root, const wchar_t* expression, tovin::WideString& text) {
  try {
    root.query(expression, eitherKind, text);
    return true;
  } catch (const tovin::Exception&) {
    return false;
  }
}

// A truth counts as the number 0 or 1, a text of the same letters as none.
bool isTruth(const tovin::iNode& root, const wchar_t* expression, const tovin::WideString& text) {
  int number = 0;
  return (text.view() == L"true" || text.view() == L"false") && root.query(expression, eitherKind, number);
}

// Nodes; of an expression that gives a value the value.
bool printWhatItGives(const tovin::iNode& root, const wchar_t* expression) {
  try {
    return printNodes(root, expression);
  } catch (const tovin::Exception&) {
    tovin::WideString text;
    if (!isValue(root, expression, text)) throw;
    if (isTruth(root, expression, text)) return printTruth(root, expression);
    std::cout << utf8(text) << '\n';
    return true;
  }
}

using Print = bool (*)(const tovin::iNode& root, const wchar_t* expression);
const std::map<std::string, Print> printers = {{"", printWhatItGives},          {"nodes", printNodes},
                                               {"properties", printProperties}, {"string", printString},
                                               {"int", printInteger},           {"bool", printTruth}};

// A value where nodes were asked for is refused with the way to have it.
bool print(const std::string& as, const tovin::iNode& root, const wchar_t* expression) {
  try {
    return printers.at(as)(root, expression);
  } catch (const tovin::Exception& e) {
    tovin::WideString text;
    const bool nodes = as == "nodes" || as == "properties";
    if (!nodes || !isValue(root, expression, text)) throw;
    throw tovin::Exception(L"%ls; --as %ls prints its value", e.getMessage(),
                           isTruth(root, expression, text) ? L"bool" : L"string");
  }
}

int run(const Options& options) {
  if (options.file == "-" && options.expressionFile == "-") {
    throw tovin::Exception(L"The document and the query cannot both be standard input");
  }
  const std::string expression = expressionOf(options);
  const tovin::Ptr<tovin::iNode> root = readDocument(options.file);
  return print(options.as, *root, tovin::utf8ToWide(expression).c_str()) ? commands::done
                                                                         : commands::negative;
}

}  // namespace

void commands::addQuery(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* query = app.add_subcommand("query", "Run a path query on an XML document or a node record");
  arguments::addFile(*query, "FILE", options->file, "XML document or node record; - for standard input")
      ->required();
  CLI::Option* text = query->add_option("XPATH", options->expression, "The query")->type_name("XPATH");
  CLI::Option* file = arguments::addFile(*query, "--expression-file", options->expressionFile,
                                         "Take the query from this file; - for standard input");
  text->excludes(file);
  arguments::restrictTo(
      query->add_option("--as", options->as, "What to print: nodes, properties, string, int or bool"),
      {"nodes", "properties", "string", "int", "bool"})
      ->type_name("FORM")
      ->default_str("nodes, or the value that it gives");
  query->footer(
      "Example: ztclient query job.xml \"/job/step[@state='failed']\"\n"
      "Exit status 1: nothing is selected, or the answer is false.");
  query->callback([options, text, file, &status] {
    if (text->count() + file->count() == 0) throw CLI::RequiredError("XPATH or --expression-file");
    status = run(*options);
  });
}
