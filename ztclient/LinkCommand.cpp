// ztclient link: the link that runs a published protocol.
#include <iostream>
#include <memory>
#include <set>

#include "tovinCore/Units.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/client/CProtocolLinkBuilder.h"
#include "ztclient/Commands.h"
#include "ztclient/arguments/Address.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/arguments/NameValue.h"
#include "ztclient/input/SessionId.h"
#include "ztclient/terminal/Messages.h"

namespace {

constexpr std::string_view idPrefix = "session:";
constexpr std::string_view filePrefix = "session-file:";

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
  const bool known = runAs == "default" || runAs == "anonymous" || runAs == "session" ||
                     runAs.starts_with(idPrefix) ||
                     (runAs.starts_with(filePrefix) && runAs.size() > filePrefix.size());
  return known ? "" : "is session:ID, session-file:FILE, session, default or anonymous, not " + runAs;
}

std::string sessionOf(const std::string& runAs) {
  if (runAs.starts_with(idPrefix)) return runAs.substr(idPrefix.size());
  if (runAs.starts_with(filePrefix)) return sessionId::fromFile(runAs.substr(filePrefix.size()));
  const std::string id = sessionId::fromEnvironment();
  if (id.empty()) throw CLI::ValidationError("--as", "session wants the variable ZTCLIENT_SESSION");
  return id;
}

void setRunAs(CProtocolLinkBuilder& builder, const std::string& runAs) {
  if (runAs == "anonymous") return builder.SetRunUser(CProtocolLinkBuilder::RunAsAnonymous, nullptr);
  if (runAs == "default") return;
  builder.SetRunUser(CProtocolLinkBuilder::RunAsSessionUser, tovin::utf8ToWide(sessionOf(runAs)).c_str());
}

void setParameters(CProtocolLinkBuilder& builder, const std::vector<NameValue>& parameters) {
  std::set<std::string> names;
  for (const auto& [name, value] : parameters) {
    if (!value) throw CLI::ValidationError("--param", "takes NAME=VALUE, not " + name);
    if (name.empty()) throw CLI::ValidationError("--param", "the name before '=' is empty");
    if (!names.insert(name).second) messages::warn(name + " is given twice, the first holds");
    builder.SetParameter(tovin::utf8ToWide(name).c_str(), tovin::utf8ToWide(*value).c_str());
  }
}

// What begins with these four letters gets no scheme.
void warnOf(const std::string& server) {
  for (const std::string& doubt : address::doubts(server)) messages::warn(doubt);
  const bool taken = tovin::equalFolded(std::wstring_view(tovin::utf8ToWide(server.substr(0, 4))),
                                        std::wstring_view(L"http"));
  if (taken && server.find("://") == server.npos)
    messages::warn("no scheme in \"" + server + "\", which begins with http");
}

void run(const Options& options) {
  warnOf(options.server);
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
  arguments::requirePrintable(
      link->add_option("SERVER", options->server, "The server, with or without a scheme")
          ->required()
          ->type_name("ADDRESS"));
  link->add_option("PROTOCOL", options->protocol, "The protocol's identifier")->required()->type_name("TEXT");
  addNameValues(*link, "--param", options->parameters,
                "A parameter; may be repeated, its first value counts");
  CLI::Option* runAs = link->add_option("--as", options->runAs,
                                        "Who runs it: session-file:FILE or session, whose id is in the file "
                                        "or in ZTCLIENT_SESSION; session:ID, which "
                                        "everybody on this computer can see; default or anonymous");
  runAs->check(checkRunAs)->type_name("WHO")->capture_default_str();
  arguments::offer(runAs, {"default", "anonymous", "session", "session-file:", "session:"});
  link->add_option("--message", options->message, "Shown while the job runs")->type_name("TEXT");
  link->add_option("--array-delimiter", options->arrayDelimiter, "Separates the items of array parameters")
      ->type_name("TEXT");
  link->footer("Example: ztclient link atlas:9944 'Find Similar' --param limit=10 --as anonymous");
  link->callback([options, &status] {
    run(*options);
    status = done;
  });
}
