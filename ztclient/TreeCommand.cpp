// ztclient tree: an XML document or a node record as a tree, and the way from one to the other.
#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>

#include "tovin/values/BitsetValue.h"
#include "tovin/values/DoubleValue.h"
#include "tovin/values/IntegerArrayValue.h"
#include "tovin/values/IntegerValue.h"
#include "tovin/values/StringArrayValue.h"
#include "tovin/values/StringValue.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/node/CObjectTransportNode.h"
#include "ztclient/Commands.h"
#include "ztclient/answers/Json.h"
#include "ztclient/answers/OutputFile.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/input/Document.h"
#include "ztclient/pages/TreePage.h"
#include "ztcore/ztMemoryStreams.h"

namespace {

// From this level on, its number stands where the blanks would take the line.
constexpr size_t numberedLevel = 40;

struct Options {
  std::string file;
  std::string record;
  std::string html;
  bool json = false;
};

template <class T>
const T* as(const tovin::Value& value) {
  return tovin::seek<T>(static_cast<const tovin::Object*>(&value));
}

Json textOrNull(const wchar_t* text) { return text ? Json(tovin::wideToUtf8(text)) : Json(); }

// With the characters behind a U+0000 too.
Json textOrNull(const tovin::WideString& text) {
  return text.isNull() ? Json() : Json(tovin::wideToUtf8(text.view()));
}

Json valueOf(const tovin::Value& value) {
  if (const auto* text = as<tovin::StringValue>(value)) return textOrNull(text->getString());
  if (const auto* real = as<tovin::DoubleValue>(value)) return numberOf(real->getDouble());
  if (const auto* integer = as<tovin::IntegerValue>(value)) return integer->getInteger();
  if (const auto* bits = as<tovin::BitsetValue>(value)) return bitsOn(*bits);
  if (const auto* numbers = as<tovin::IntegerArrayValue>(value)) return numbers->content();
  if (const auto* texts = as<tovin::StringArrayValue>(value)) {
    Json list = Json::array();
    for (const tovin::WideString& text : texts->content()) list.push_back(textOrNull(text));
    return list;
  }
  return nullptr;
}

std::string lastWord(const char* className) {
  const std::string name = className;
  return name.substr(name.rfind('.') + 1);
}

Json propertyToJson(const tovin::iProperty& property) {
  const tovin::Value& value = property.getValue();
  Json json = {{"name", textOrNull(property.getName())},
               {"type", lastWord(value.getClassTag())},
               {"value", valueOf(value)},
               {"flags", property.getInfo()->getMetaDataFlags().getBits()}};
  if (const auto* bits = as<tovin::BitsetValue>(value)) json["bits"] = bits->getNumBits();
  return json;
}

template <class Visit>
void forProperties(const tovin::iNode& node, Visit&& visit) {
  if (!node.hasProperties()) return;
  const tovin::iPropertyCollection* properties = node.getProperties();
  for (unsigned i = 0; i < properties->getSize(); ++i) visit(*properties->get(i));
}

Json nodeToJson(const tovin::iNode& node, size_t depth) {
  Json json = {{"depth", depth},
               {"class", static_cast<const char*>(node.getClassTag())},
               {"name", textOrNull(node.getName())},
               {"properties", Json::array()}};
  forProperties(node, [&](const tovin::iProperty& property) {
    json["properties"].push_back(propertyToJson(property));
  });
  if (const auto* carrier = tovin::seek<CObjectTransportNode>(static_cast<const tovin::Object*>(&node))) {
    const tovin::Object* object = carrier->GetObject();
    json["object"] = object ? Json(static_cast<const char*>(object->getClassTag())) : Json();
  }
  return json;
}

std::string nodeToLine(const tovin::iNode& node, size_t depth) {
  std::string line = depth < numberedLevel ? std::string(2 * depth, ' ') : std::to_string(depth) + " ";
  line += onOneLine(tovin::wideToUtf8(node.getName()));
  forProperties(node, [&](const tovin::iProperty& property) {
    line +=
        " " + onOneLine(tovin::wideToUtf8(property.getName())) + "=" + toText(valueOf(property.getValue()));
  });
  if (const auto* carrier = tovin::seek<CObjectTransportNode>(static_cast<const tovin::Object*>(&node))) {
    if (carrier->GetObject())
      line += std::string(" <") + static_cast<const char*>(carrier->GetObject()->getClassTag()) + ">";
  }
  return line;
}

void print(const tovin::iNode& root, bool json) {
  walk(root, [&](const tovin::iNode& node, size_t depth) {
    std::cout << (json ? toText(nodeToJson(node, depth)) : nodeToLine(node, depth)) << '\n';
  });
}

void writeRecord(const tovin::iNode& root, const std::string& file) {
  ztMemoryByteOutputStream record;
  root.serialize(record);
  const std::string_view bytes(reinterpret_cast<const char*>(record.GetBytes()), record.GetSize());
  outputFile::place(file, bytes);
}

std::string plainText(const Json& value) {
  return value.is_string() ? value.get<std::string>() : toText(value);
}

void writePage(const tovin::iNode& root, const Options& options) {
  TreePage page(options.file == "-" ? "Standard input" : options.file);
  walk(root, [&](const tovin::iNode& node, size_t depth) {
    std::vector<TreePage::Property> properties;
    forProperties(node, [&](const tovin::iProperty& property) {
      const tovin::Value& value = property.getValue();
      properties.push_back(
          {tovin::wideToUtf8(property.getName()), lastWord(value.getClassTag()), plainText(valueOf(value))});
    });
    page.add(depth, tovin::wideToUtf8(node.getName()), properties);
  });
  outputFile::place(options.html, page.text());
}

void run(const Options& options) {
  outputFile::requireAnother("--record", options.record, {options.file});
  outputFile::requireAnother("--html", options.html, {options.file});
  const tovin::Ptr<tovin::iNode> root = readDocument(options.file);
  if (!options.record.empty()) writeRecord(*root, options.record);
  if (!options.html.empty()) writePage(*root, options);
  if (options.record.empty() && options.html.empty()) print(*root, options.json);
}

}  // namespace

void commands::addTree(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* tree = app.add_subcommand("tree", "Show an XML document or a node record as a tree");
  arguments::addFile(*tree, "FILE", options->file, "XML document or node record; - for standard input")
      ->required();
  CLI::Option* json = tree->add_flag("--json", options->json, "One JSON object a node, each on its own line");
  arguments::addFile(*tree, "--record", options->record,
                     "Write the node record to this file and print no tree; - for standard output", "OUT");
  arguments::addFile(*tree, "--html", options->html,
                     "Write a page with the tree to this file and print none; - for standard output", "OUT")
      ->excludes(json);
  tree->footer(
      "Example: ztclient tree service.wsdl --record service.record\n"
      "Of XML there are elements and attributes: text content, CDATA sections and comments are passed over.");
  tree->callback([options, &status] {
    run(*options);
    status = done;
  });
}
