// ztclient session: everything that a client does with the server, one step after the other.
#include <iostream>
#include <memory>

#include "ztclient/Commands.h"
#include "ztclient/arguments/Address.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/session/Session.h"

namespace {

struct Options {
  std::string wsdl;
  std::string server;
};

// CLI11's way to refuse: a text, empty for none.
std::string checkServer(const std::string& server) {
  return address::isWebAddress(server)
             ? ""
             : "takes scheme, host and port, as http://atlas:9944, not \"" + server + '"';
}

}  // namespace

void commands::addSession(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* session = app.add_subcommand("session", "Go through a whole session with the server");
  arguments::addFile(*session, "--wsdl", options->wsdl, "The service's WSDL document; - for standard input")
      ->default_str("a bundled one");
  arguments::requirePrintable(
      session->add_option("--server", options->server, "Scheme, host and port of the server"))
      ->check(checkServer)
      ->type_name("URL")
      ->default_str("a small one of its own");
  session->footer("Example: ztclient session --wsdl orders.wsdl");
  session->callback([options, &status] {
    Session(std::cout, options->wsdl, options->server).run();
    status = done;
  });
}
