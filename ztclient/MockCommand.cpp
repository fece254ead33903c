// ztclient mock: a stand-in server for a service.
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>

#include "tovinCore/platform/Paths.h"
#include "ztclient/Commands.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/input/InputFile.h"
#include "ztclient/input/ServiceFile.h"
#include "ztclient/session/MockServer.h"
#include "ztclient/terminal/Escaping.h"
#include "ztclient/terminal/Messages.h"

namespace {

struct Options {
  std::string file;
  std::string folder;
  uint16_t port = 0;
  ServiceSources sources;
};

// Of each operation DIR/OPERATION.json or DIR/OPERATION.xml, where there is one.
std::map<std::string, std::string> answersIn(const std::string& folder, const ztservice::Service& service) {
  std::map<std::string, std::string> answers;
  if (!std::filesystem::is_directory(tovin::platform::pathOf(folder)))
    throw CLI::ValidationError("--answers", '"' + folder + "\" is no folder");
  for (const ztservice::Port& port : service.ports()) {
    for (const ztservice::Operation& operation : port.operations()) {
      for (const char* ending : {".json", ".xml"}) {
        const std::string name(operation.name());
        // What a document calls an operation must not lead out of the folder.
        if (name.find_first_of("/\\:") != name.npos || name.starts_with('.')) continue;
        const std::string file = folder + '/' + name + ending;
        if (!answers.contains(name) && std::filesystem::exists(tovin::platform::pathOf(file)))
          answers[name] = readBytes(file);
      }
    }
  }
  return answers;
}

int run(const Options& options) {
  const ztservice::Service service = loadService(options.file, options.sources);
  for (const ztservice::Warning& warning : service.warnings()) messages::warn(warning.toString());
  std::map<std::string, std::string> answers;
  if (!options.folder.empty()) answers = answersIn(options.folder, service);
  MockServer server(service, std::move(answers), options.port);
  std::cout << server.url() << std::endl;
  server.run([] { return std::cout.good(); },
             [](const std::string& told) { std::cout << escaping::shown(told) << std::endl; });
  return commands::trouble;
}

}  // namespace

void commands::addMock(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* mock = app.add_subcommand("mock", "Stand in for a service, on a port of this machine");
  arguments::addFile(*mock, "FILE", options->file, "WSDL document, or its address; - for standard input")
      ->required();
  arguments::addNumber(*mock, "--port", options->port, "The port")->default_str("one that is free");
  arguments::addFile(*mock, "--answers", options->folder,
                     "A folder with what operations answer: OPERATION.json, as call shows it, or "
                     "OPERATION.xml, a whole envelope; default samples",
                     "DIR");
  addServiceSources(*mock, options->sources);
  mock->footer("Example: ztclient mock orders.wsdl --port 8080");
  mock->callback([options, &status] { status = run(*options); });
}
