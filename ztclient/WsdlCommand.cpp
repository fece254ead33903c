// ztclient wsdl: what a WSDL document offers, and the types of what goes in and out.
#include <iostream>
#include <memory>
#include <stdexcept>

#include "tovinCore/Exception.h"
#include "ztclient/Commands.h"
#include "ztclient/answers/WsdlJson.h"
#include "ztclient/input/Document.h"

namespace {

struct Options {
  std::string file;
  bool json = false;
  bool types = false;
  bool backwardCompatible = false;
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
    for (const Json& warning : warnings) std::cerr << "ztclient wsdl: " << textOf(warning) << '\n';
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

int run(const Options& options) {
  try {
    CWsdlParser parser;
    parser.SetBackwardCompatible70(options.backwardCompatible);
    loadWsdl(parser, options.file);
    if (options.json) {
      writeWsdlJson(parser, options.types, std::cout);
      std::cout << '\n';
    } else {
      Printer printer;
      visitWsdl(parser, options.types, printer);
    }
    return commands::done;
  } catch (const tovin::Exception& e) {
    // The texts of a document are bytes in messages too.
    const std::string message = bytesOf(e.getMessage());
    if (!options.json) throw std::runtime_error(message);
    std::cout << toText({{"error", message}}, 1) << '\n';
    return commands::trouble;
  }
}

}  // namespace

void commands::addWsdl(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* wsdl = app.add_subcommand("wsdl", "Show what a WSDL document offers");
  wsdl->add_option("FILE", options->file, "WSDL document; - for standard input")->required();
  wsdl->add_flag("--json", options->json, "One JSON document");
  wsdl->add_flag("--types", options->types, "Resolve the type of every part");
  wsdl->add_flag("--backward-compatible", options->backwardCompatible,
                 "Take arrays of document style as arrays, as in RPC style");
  wsdl->footer("Example: ztclient wsdl orders.wsdl --types");
  wsdl->callback([options, &status] { status = run(*options); });
}
