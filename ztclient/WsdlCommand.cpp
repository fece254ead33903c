// ztclient wsdl: what a WSDL document offers, and the types of what goes in and out.
#include <algorithm>
#include <cstdint>
#include <iostream>
#include <memory>
#include <set>
#include <vector>

#include "tovinCore/Exception.h"
#include "tovinCore/Units.h"
#include "tovinCore/Utf8.h"
#include "ztclient/Commands.h"
#include "ztclient/answers/ByteText.h"
#include "ztclient/answers/OutputFile.h"
#include "ztclient/answers/ServiceChanges.h"
#include "ztclient/answers/ServiceDot.h"
#include "ztclient/answers/ServiceJson.h"
#include "ztclient/answers/ServiceText.h"
#include "ztclient/answers/WsdlJson.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/input/Document.h"
#include "ztclient/input/ServiceFile.h"
#include "ztclient/pages/ServicePage.h"
#include "ztclient/terminal/Messages.h"
#include "ztservice/call/Request.h"

namespace {

struct Options {
  std::string file;
  bool json = false;
  bool types = false;
  bool backwardCompatible = false;
  bool all = false;
  std::string operation;
  std::string flat;
  std::string html;
  bool dot = false;
  std::string newer;
  ServiceSources sources;
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
  if (!text.empty()) messages::warn(text + ": --all shows what is left out");
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

// With the operation that is asked for only, where one is.
ztservice::Service narrowed(const ztservice::Service& service, const std::string& operation) {
  if (operation.empty()) return service;
  static_cast<void>(ztservice::call::requireOperation(service, operation));
  return service.narrowedTo(operation);
}

void sayWhatIsMissing(const ztservice::Service& service) {
  for (const ztservice::Warning& warning : service.warnings()) messages::warn(warning.toString());
  const size_t unresolved = countUnresolved(service);
  if (unresolved > 0) {
    messages::warn(counted(service.types().size(), "type", "types") + ", " + std::to_string(unresolved) +
                   " not resolved: run with --json to see which");
  }
}

int showAll(const Options& options) {
  const ztservice::Service service = narrowed(loadService(options.file, options.sources), options.operation);
  if (!options.html.empty()) {
    outputFile::place(options.html,
                      servicePage(service, options.file == "-" ? "Standard input" : options.file));
    return commands::done;
  }
  if (options.dot) {
    writeServiceDot(service, std::cout);
    sayWhatIsMissing(service);
  } else if (options.json) {
    writeServiceJson(service, std::cout);
  } else {
    writeServiceText(service, std::cout);
    sayWhatIsMissing(service);
  }
  return commands::done;
}

int showChanges(const Options& options) {
  const std::vector<ServiceChange> changes =
      changesOf(narrowed(loadService(options.file, options.sources), options.operation),
                narrowed(loadService(options.newer, options.sources), options.operation));
  options.json ? writeChangesJson(changes, std::cout) : writeChangesText(changes, std::cout);
  const bool breaks =
      std::any_of(changes.begin(), changes.end(), [](const ServiceChange& one) { return one.breaks; });
  return breaks ? commands::negative : commands::done;
}

int writeFlat(const Options& options) {
  outputFile::place(options.flat, flattenService(options.file, options.sources));
  return commands::done;
}

// With --json a failure is an answer too.
template <class Work>
int answering(const Options& options, const Work& work) {
  try {
    return work(options);
  } catch (const tovin::Exception& e) {
    if (!options.json) throw;
    std::cout << toText({{"error", messages::textOf(e)}}, 1) << '\n';
    return commands::trouble;
  }
}

int run(const Options& options) {
  if (!options.flat.empty()) return writeFlat(options);
  if (!options.newer.empty()) return answering(options, showChanges);
  outputFile::requireAnother("--html", options.html, {options.file});
  if (options.all) return answering(options, showAll);
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
  arguments::addFile(*wsdl, "FILE", options->file,
                     "WSDL document; - for standard input; with --all an address too")
      ->required();
  CLI::Option* json = wsdl->add_flag("--json", options->json, "One JSON document");
  CLI::Option* types = wsdl->add_flag("--types", options->types, "Resolve the type of every part");
  CLI::Option* compatible = wsdl->add_flag("--backward-compatible", options->backwardCompatible,
                                           "Take arrays of document style as arrays, as in RPC style");
  CLI::Option* all =
      wsdl->add_flag("--all", options->all, "The whole service: all documents, services and types");
  CLI::Option* flat = arguments::addFile(*wsdl, "--flatten", options->flat,
                                         "Write the service and all it needs into one file", "OUT");
  CLI::Option* newer =
      arguments::addFile(*wsdl, "--changes", options->newer,
                         "Tell what a newer version has otherwise, and whether that breaks callers");
  CLI::Option* operation = arguments::requireText(wsdl->add_option("--operation", options->operation,
                                                                   "Only the operation of that name"))
                               ->type_name("NAME");
  CLI::Option* html =
      arguments::addFile(*wsdl, "--html", options->html,
                         "Write a page with the whole service to this file; - for standard output", "OUT");
  CLI::Option* dot =
      wsdl->add_flag("--dot", options->dot, "Operations and types and how they hang together, for Graphviz");
  html->needs(all)->excludes(json);
  dot->needs(all)->excludes(json)->excludes(html);
  flat->excludes(newer)->excludes(all)->excludes(json)->excludes(operation);
  newer->excludes(all);
  for (CLI::Option* whole : {all, flat, newer}) whole->excludes(types)->excludes(compatible);
  addServiceSources(*wsdl, options->sources);
  wsdl->footer("Example: ztclient wsdl orders.wsdl --types");
  wsdl->callback([=, &status] {
    const bool isWhole = all->count() || flat->count() || newer->count();
    std::vector<CLI::Option*> needing = options->sources.added;
    needing.push_back(operation);
    for (const CLI::Option* one : needing) {
      if (one->count() && !isWhole)
        throw CLI::RequiresError(one->get_name(), "--all, --flatten or --changes");
    }
    status = run(*options);
  });
}
