// ztclient endpoint: from what people write to the locator's end point, and back.
#include <iostream>
#include <memory>

#include "tovinCore/Utf8.h"
#include "ztbaseclient/client/LocatorEndpointIdentity.h"
#include "ztclient/Commands.h"
#include "ztclient/arguments/Address.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/terminal/Messages.h"

namespace {

constexpr int currentRelease = 801;

struct Options {
  std::string text;
  int release = currentRelease;
  bool reverse = false;
};

// Other schemes than these, in exactly these letters, are taken for a host.
bool hasStrangeScheme(const std::string& text) {
  return text.find("://") != text.npos && !text.starts_with("http://") && !text.starts_with("https://");
}

void run(const Options& options) {
  const std::wstring text = tovin::utf8ToWide(options.text);
  tovin::WideString result;
  const auto doubts = address::doubts(options.text);
  for (const std::string& doubt : doubts) messages::warn(doubt);
  if (doubts.empty() && hasStrangeScheme(options.text))
    messages::warn("the scheme is not written http or https, in small letters");
  if (options.reverse)
    LocatorEndpointIdentity::EndPointToHostAndPort(text.c_str(), result);
  else
    LocatorEndpointIdentity::HostAndPortToEndPoint(text.c_str(), result, options.release);
  std::cout << tovin::wideToUtf8(result.view()) << '\n';
}

}  // namespace

void commands::addEndpoint(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* endpoint =
      app.add_subcommand("endpoint", "Turn a server's host text into its end point, or back");
  arguments::requirePrintable(endpoint->add_option("TEXT", options->text, "Host, host:port or URL")
                                  ->required()
                                  ->type_name("ADDRESS"));
  arguments::addNumber(*endpoint, "--release", options->release, "The server's release number")
      ->capture_default_str();
  endpoint->add_flag("--reverse", options->reverse, "From the end point back to the host text");
  endpoint->footer("Example: ztclient endpoint atlas --release 403");
  endpoint->callback([options, &status] {
    run(*options);
    status = done;
  });
}
