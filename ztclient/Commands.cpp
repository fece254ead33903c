#include "ztclient/Commands.h"

#include "ztclient/Version.h"

void commands::addAll(CLI::App& app, int& status) {
  app.description("Client command of the workflow server");
  app.set_version_flag("--version", std::string("ztclient ") + version::text, "Print the version and exit");
  app.footer(
      "Example: ztclient session\n"
      "`ztclient COMMAND --help` tells more about a command.\n"
      "Exit status: 0 done; 1 a negative answer, as files that differ; 2 wrong use or trouble.");
  app.require_subcommand(1);
  // Before the commands, which inherit it: a '/' begins a path query or a file name on every system.
  app.allow_windows_style_options(false);
  for (auto* add : {addSession, addWsdl, addTree, addQuery, addCredentials, addEndpoint, addLink, addUpload,
                    addCache, addDiff, addChecksum, addLog}) {
    add(app, status);
  }
  // Behind the commands, which would all inherit it.
  app.set_help_all_flag("--help-all", "Print the help of every command and exit");
}
