// ztclient link: the link that runs a published protocol.
#include <iostream>
#include <memory>

#include "tovinCore/Utf8.h"
#include "ztbaseclient/client/CProtocolLinkBuilder.h"
#include "ztclient/Commands.h"
#include "ztclient/arguments/NameValue.h"

namespace {

constexpr std::string_view sessionPrefix = "session:";

struct Options {
  std::string server;
  std::string protocol;
  std::vector<NameValue> parameters;
  std::string runAs = "default";
  std::string message;
  std::string arrayDelimiter;
};

// CLI11's way to refuse: a text, empty for none.
std::string checkRunAs(const std::string& runAs) {
  if (runAs == "default" || runAs == "anonymous" || runAs.starts_with(sessionPrefix)) return {};
  return "is session:ID, default or anonymous, not " + runAs;
}

void setRunAs(CProtocolLinkBuilder& builder, const std::string& runAs) {
  if (runAs == "anonymous") return builder.SetRunUser(CProtocolLinkBuilder::RunAsAnonymous, nullptr);
  if (runAs == "default") return;
  const std::wstring session = tovin::utf8ToWide(runAs.substr(sessionPrefix.size()));
  builder.SetRunUser(CProtocolLinkBuilder::RunAsSessionUser, session.c_str());
}

void setParameters(CProtocolLinkBuilder& builder, const std::vector<NameValue>& parameters) {
  for (const auto& [name, value] : parameters) {
    if (!value) throw CLI::ValidationError("--param", "takes NAME=VALUE, not " + name);
    builder.SetParameter(tovin::utf8ToWide(name).c_str(), tovin::utf8ToWide(*value).c_str());
  }
}

void run(const Options& options) {
  CProtocolLinkBuilder builder(tovin::utf8ToWide(options.server).c_str(),
                               tovin::utf8ToWide(options.protocol).c_str());
  setParameters(builder, options.parameters);
  setRunAs(builder, options.runAs);
  builder.SetProgressMessage(tovin::utf8ToWide(options.message).c_str());
  builder.SetArrayDelimiter(tovin::utf8ToWide(options.arrayDelimiter).c_str());
  std::cout << tovin::wideToUtf8(builder.Construct()) << '\n';
}

}  // namespace

void commands::addLink(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* link = app.add_subcommand("link", "Build the link that runs a published protocol");
  link->add_option("SERVER", options->server, "The server, with or without a scheme")->required();
  link->add_option("PROTOCOL", options->protocol, "The protocol's identifier")->required();
  addNameValues(*link, "--param", options->parameters, "A parameter; its first value counts");
  link->add_option("--as", options->runAs, "Who runs it: session:ID, default or anonymous")
      ->check(checkRunAs);
  link->add_option("--message", options->message, "Shown while the job runs");
  link->add_option("--array-delimiter", options->arrayDelimiter, "Separates the items of array parameters");
  link->footer("Example: ztclient link atlas:9944 'Find Similar' --param limit=10 --as anonymous");
  link->callback([options, &status] {
    run(*options);
    status = done;
  });
}
