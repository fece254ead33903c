// ztclient help: the same as --help, with the command's name behind.
#include <iostream>
#include <memory>

#include "ztclient/Commands.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/arguments/Suggestion.h"

namespace {

std::vector<std::string> namesBelow(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
    names.push_back(command->get_name());
  return names;
}

void run(const CLI::App& app, const std::vector<std::string>& path) {
  const CLI::App* command = &app;
  std::string name = app.get_name();
  for (const std::string& word : path) {
    const auto below = command->get_subcommands([&](const CLI::App* one) { return one->get_name() == word; });
    if (below.empty()) throw CLI::ValidationError(noCommand(word, namesBelow(*command)));
    command = below.front();
    name += ' ' + word;
  }
  std::cout << app.get_formatter()->make_help(command, name, CLI::AppFormatMode::Normal);
}

}  // namespace

void commands::addHelp(CLI::App& app, int& status) {
  auto path = std::make_shared<std::vector<std::string>>();
  CLI::App* help = app.add_subcommand("help", "Print the help of a command");
  arguments::offer(help->add_option("COMMAND", *path, "The command; of all of them if it is left out")
                       ->type_name("COMMAND"),
                   namesBelow(app));
  help->footer("Example: ztclient help credentials make");
  help->callback([&app, path, &status] {
    run(app, *path);
    status = done;
  });
}
