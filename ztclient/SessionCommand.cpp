// ztclient session: everything that a client does with the server, one step after the other.
#include <iostream>
#include <memory>

#include "ztclient/Commands.h"
#include "ztclient/session/Session.h"

namespace {

struct Options {
  std::string wsdl;
  std::string server;
};

}  // namespace

void commands::addSession(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* session = app.add_subcommand("session", "Go through a whole session with the server");
  session->add_option("--wsdl", options->wsdl, "The service's WSDL document; a bundled one unless said");
  session->add_option("--server", options->server,
                      "Scheme, host and port; a small server on this computer unless said");
  session->footer("Example: ztclient session --wsdl orders.wsdl");
  session->callback([options, &status] {
    Session(std::cout, options->wsdl, options->server).run();
    status = done;
  });
}
