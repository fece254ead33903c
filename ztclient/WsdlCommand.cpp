// ztclient wsdl: what a WSDL document offers, and the types of what goes in and out.
#include <iostream>
#include <memory>
#include <set>
#include <vector>

#include "tovinCore/Exception.h"
#include "tovinCore/Units.h"
#include "ztclient/Commands.h"
#include "ztclient/answers/ByteText.h"
#include "ztclient/answers/ServiceJson.h"
#include "ztclient/answers/WsdlJson.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/input/Document.h"
#include "ztclient/terminal/Messages.h"

namespace {

struct Options {
  std::string file;
  bool json = false;
  bool types = false;
  bool backwardCompatible = false;
  bool all = false;
};

std::string textOf(const Json& json) { return json.get<std::string>(); }

const char* styleOf(const Json& json) { return json["documentStyle"] ? "document" : "rpc"; }

// The answer for a reader.
class Printer : public WsdlVisitor {
 public:
  void onDocument(const Json& document) override {
    std::cout << "target namespace " << textOf(document["targetNamespace"]) << "\nservice "
              << textOf(document["service"]) << '\n';
  }
  void onPort(const Json& port) override {
    const Json& binding = port["binding"];
    std::cout << "  port " << textOf(port["name"]) << " at " << textOf(port["address"])
              << (port["soap11OrHttp"] ? "" : " (not SOAP 1.1 or HTTP)") << "\n    binding "
              << textOf(binding["name"]) << " of " << textOf(binding["type"]) << ", " << styleOf(binding)
              << '\n';
  }
  void onOperation(const Json& operation) override {
    std::cout << "    operation " << textOf(operation["name"]) << ", " << styleOf(operation) << '\n';
  }
  void onMessage(const char* direction, const Json& message) override {
    showParts_ = !textOf(message["name"]).empty();
    if (!showParts_) return;
    const std::string shortDirection = direction == std::string("input") ? "in " : "out";
    std::cout << "      " << shortDirection << ' ' << textOf(message["name"]) << '\n';
  }
  void onPart(const Json& part, const std::string* resolved) override {
    if (!showParts_) return;
    const std::string element = textOf(part["element"]);
    std::cout << "        " << textOf(part["name"]) << ": "
              << (element.empty() ? textOf(part["type"]) : "element " + element) << '\n';
    if (resolved) std::cout << *resolved;
  }
  void onEnd(const Json& warnings) override {
    for (const Json& warning : warnings) messages::warn(textOf(warning));
  }
  std::string resolvedText(const Json& resolved) const override {
    const std::string margin(10, ' ');
    if (resolved.contains("error")) return margin + "cannot be resolved: " + textOf(resolved["error"]) + '\n';
    const std::string base = textOf(resolved["superClass"]);
    std::string text = margin + textOf(resolved["kind"]) + ' ' + textOf(resolved["name"]) + " in " +
                       textOf(resolved["namespace"]) + (base.empty() ? "" : ", extends " + base) + '\n';
    for (const Json& element : resolved["elements"]) {
      text += margin + "  " + textOf(element["name"]) + ": " + textOf(element["type"]) +
              (element["required"] ? "" : " (optional)") + '\n';
    }
    return text;
  }

 private:
  bool showParts_ = false;
};

std::string counted(size_t count, const std::string& one, const std::string& several) {
  return count == 1 ? "1 " + one : std::to_string(count) + ' ' + several;
}

// The names of the document's children of a kind.
std::vector<std::string> namesOf(const tovin::iNode& root, std::wstring_view kind) {
  std::vector<std::string> names;
  for (const tovin::iNode* child : root.getChildren()) {
    const std::wstring_view name = child->getName() ? child->getName() : L"";
    if (!tovin::equalFolded(name.substr(name.find(L':') + 1), kind)) continue;
    const tovin::iProperty* given = child->hasProperties() ? child->getProperties()->find(L"name") : nullptr;
    names.push_back(given ? bytesOf(given->getValue().getText().view()) : std::string());
  }
  return names;
}

// Imports of other documents are not followed, and of several services the last one is shown.
void sayWhatIsLeftOut(const tovin::iNode& root) {
  std::string text;
  const size_t imports = namesOf(root, L"import").size();
  if (imports > 0) text = counted(imports, "import is not followed", "imports are not followed");
  std::vector<std::string> services = namesOf(root, L"service");
  if (!services.empty()) services.pop_back();
  if (!services.empty()) {
    std::string names;
    for (const std::string& name : services) names += (names.empty() ? "" : ", ") + name;
    text +=
        (text.empty() ? "" : ", ") + counted(services.size(), "further service (" + names + ") is not shown",
                                             "further services (" + names + ") are not shown");
  }
  if (!text.empty()) messages::warn(text);
}

// A schema file that fails is named once, whatever asks for it.
class SchemaFailures {
 public:
  void operator()(const tovin::Exception& e) {
    if (!e.getFile().empty() && said_.insert(e.getFile()).second)
      messages::error(messages::textOf(withCharacters(e)));
  }

 private:
  std::set<std::wstring> said_;
};

int showAll(const Options& options) {
  try {
    const ztservice::Service service = ztservice::load(options.file);
    if (options.json) writeServiceJson(service, std::cout);
    return commands::done;
  } catch (const ztservice::Error& e) {
    if (!options.json) throw;
    std::cout << toText({{"error", messages::textOf(e)}}, 1) << '\n';
    return commands::trouble;
  }
}

int run(const Options& options) {
  if (options.all) return showAll(options);
  try {
    CWsdlParser parser;
    parser.SetBackwardCompatible70(options.backwardCompatible);
    loadWsdl(parser, options.file);
    if (parser.GetRoot()) sayWhatIsLeftOut(*parser.GetRoot());
    if (options.json) {
      writeWsdlJson(parser, options.types, std::cout, SchemaFailures());
      std::cout << '\n';
    } else {
      Printer printer;
      visitWsdl(parser, options.types, printer, SchemaFailures());
    }
    return commands::done;
  } catch (const tovin::Exception& e) {
    if (!options.json) throw withCharacters(e);
    std::cout << toText({{"error", bytesOf(e.getMessage())}}, 1) << '\n';
    return commands::trouble;
  }
}

}  // namespace

void commands::addWsdl(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* wsdl = app.add_subcommand("wsdl", "Show what a WSDL document offers");
  arguments::addFile(*wsdl, "FILE", options->file, "WSDL document; - for standard input")->required();
  wsdl->add_flag("--json", options->json, "One JSON document");
  wsdl->add_flag("--types", options->types, "Resolve the type of every part");
  wsdl->add_flag("--backward-compatible", options->backwardCompatible,
                 "Take arrays of document style as arrays, as in RPC style");
  wsdl->add_flag("--all", options->all, "The whole service: all documents, services and types");
  wsdl->footer("Example: ztclient wsdl orders.wsdl --types");
  wsdl->callback([options, &status] { status = run(*options); });
}
