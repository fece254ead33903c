// Writes the manual page and the completions of the command into a folder.
#include <fstream>
#include <iostream>

#include "ztclient/Commands.h"
#include "ztclient/manual/ManPage.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: ztclientManual FOLDER DATE\n";
    return 2;
  }
  int status = commands::done;
  CLI::App app("", "ztclient");
  commands::addAll(app, status);
  const std::string folder = argv[1];
  std::ofstream page(folder + "/ztclient.1"), bash(folder + "/ztclient.bash"), zsh(folder + "/_ztclient"),
      fish(folder + "/ztclient.fish");
  writeManPage(page, app, argv[2]);
  writeBashCompletion(bash, app);
  writeZshCompletion(zsh, app);
  writeFishCompletion(fish, app);
  if (page.flush() && bash.flush() && zsh.flush() && fish.flush()) return commands::done;
  std::cerr << "ztclientManual: cannot write to " << folder << '\n';
  return commands::trouble;
}
