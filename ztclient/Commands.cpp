#include "ztclient/Commands.h"

#include <algorithm>
#include <memory>

#include "ztclient/Version.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/arguments/HelpText.h"
#include "ztclient/terminal/Terminal.h"

namespace {

using terminal::Colours;

void setColours(const std::string& word) {
  terminal::settings().colours = word == "always"  ? Colours::always
                                 : word == "never" ? Colours::never
                                                   : Colours::automatic;
}

// What is said the same way everywhere.
void addManner(CLI::App& app) {
  app.add_flag("-q,--quiet", terminal::settings().quiet, "Say nothing but errors: no warnings, no progress");
  app.add_flag("-v,--verbose", terminal::settings().verbose,
               "Say what is read, where errors come from and how long it took");
  CLI::Option* colour = app.add_option_function<std::string>("--color", setColours, "When to use colours");
  arguments::restrictTo(colour, {"auto", "always", "never"})->type_name("WHEN")->default_str("auto");
}

void addMannerToAll(CLI::App& app) {
  addManner(app);
  for (CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
    addMannerToAll(*command);
}

}  // namespace

void commands::addAll(CLI::App& app, int& status) {
  app.description("Client command of the workflow server");
  app.formatter(std::make_shared<HelpText>());
  app.set_help_flag("-h,--help", "Print this help and exit");
  app.set_version_flag("-V,--version", std::string("ztclient ") + version::text,
                       "Print the version and exit");
  app.footer(
      "Example: ztclient session\n"
      "`ztclient help COMMAND` tells more about a command.\n"
      "Exit status: 0 done; 1 a negative answer, as files that differ; 2 wrong use or trouble.");
  app.require_subcommand(1);
  // Before the commands, which inherit it: a '/' begins a path query or a file name on every system.
  app.allow_windows_style_options(false);
  for (auto* add : {addSession, addWsdl, addCall, addMock, addTree, addQuery, addCredentials, addEndpoint,
                    addLink, addUpload, addCache, addDiff, addChecksum, addLog, addHelp}) {
    add(app, status);
  }
  addMannerToAll(app);
  arguments::requireUtf8(app);
  // Behind the commands, which would all inherit it.
  app.set_help_all_flag("--help-all", "Print the help of every command and exit");
}
