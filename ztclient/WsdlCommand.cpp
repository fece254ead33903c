// ztclient wsdl: what a WSDL document offers, and the types of what goes in and out.
#include <iostream>
#include <memory>
#include <stdexcept>

#include "tovinCore/Exception.h"
#include "ztclient/Commands.h"
#include "ztclient/Document.h"
#include "ztclient/WsdlJson.h"

namespace {

struct Options {
  std::string file;
  bool json = false;
  bool types = false;
  bool backwardCompatible = false;
};

Json read(const Options& options) {
  CWsdlParser parser;
  parser.SetBackwardCompatible70(options.backwardCompatible);
  loadWsdl(parser, options.file);
  return wsdlToJson(parser, options.types);
}

std::string textOf(const Json& json) { return json.get<std::string>(); }

void printResolved(const Json& resolved) {
  const std::string margin(10, ' ');
  if (resolved.contains("error")) {
    std::cout << margin << "cannot be resolved: " << textOf(resolved["error"]) << '\n';
    return;
  }
  std::cout << margin << textOf(resolved["kind"]) << ' ' << textOf(resolved["name"]) << " in "
            << textOf(resolved["namespace"]);
  const std::string base = textOf(resolved["superClass"]);
  std::cout << (base.empty() ? "" : ", extends " + base) << '\n';
  for (const Json& element : resolved["elements"]) {
    std::cout << margin << "  " << textOf(element["name"]) << ": " << textOf(element["type"])
              << (element["required"] ? "" : " (optional)") << '\n';
  }
}

void printMessage(const char* direction, const Json& message) {
  if (textOf(message["name"]).empty()) return;
  std::cout << "      " << direction << ' ' << textOf(message["name"]) << '\n';
  for (const Json& part : message["parts"]) {
    const std::string element = textOf(part["element"]);
    std::cout << "        " << textOf(part["name"]) << ": "
              << (element.empty() ? textOf(part["type"]) : "element " + element) << '\n';
    if (part.contains("resolved")) printResolved(part["resolved"]);
  }
}

const char* styleOf(const Json& json) { return json["documentStyle"] ? "document" : "rpc"; }

void printPort(const Json& port) {
  const Json& binding = port["binding"];
  std::cout << "  port " << textOf(port["name"]) << " at " << textOf(port["address"])
            << (port["soap11OrHttp"] ? "" : " (not SOAP 1.1 or HTTP)") << "\n    binding "
            << textOf(binding["name"]) << " of " << textOf(binding["type"]) << ", " << styleOf(binding)
            << '\n';
  for (const Json& operation : binding["operations"]) {
    std::cout << "    operation " << textOf(operation["name"]) << ", " << styleOf(operation) << '\n';
    printMessage("in ", operation["input"]);
    printMessage("out", operation["output"]);
  }
}

void print(const Json& json) {
  std::cout << "target namespace " << textOf(json["targetNamespace"]) << "\nservice "
            << textOf(json["service"]) << '\n';
  for (const Json& port : json["ports"]) printPort(port);
  for (const Json& warning : json["warnings"]) std::cerr << "ztclient wsdl: " << textOf(warning) << '\n';
}

int run(const Options& options) {
  try {
    const Json json = read(options);
    if (options.json)
      std::cout << toText(json, 1) << '\n';
    else
      print(json);
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
