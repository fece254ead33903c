#include "ztclient/arguments/Suggestion.h"

#include <vector>

#include "ztservice/call/Nearest.h"

namespace {

// The command line's deepest command that was recognised.
const CLI::App& deepest(const CLI::App& app) {
  const CLI::App* command = &app;
  while (!command->get_subcommands().empty()) command = command->get_subcommands().front();
  return *command;
}

std::string pathOf(const CLI::App& app) {
  std::string path = app.get_name();
  for (const CLI::App* command = &app; !command->get_subcommands().empty();) {
    command = command->get_subcommands().front();
    path += ' ' + command->get_name();
  }
  return path;
}

std::vector<std::string> commandsOf(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
    names.push_back(command->get_name());
  return names;
}

std::vector<std::string> optionsOf(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

std::string quoted(const std::string& text) { return '"' + text + '"'; }

std::string unknown(const std::string& kind, const std::string& word, const std::vector<std::string>& words) {
  return "no " + kind + ' ' + quoted(word) + ztservice::call::suggestion(word, words);
}

// "only FILE1 FILE2 can be given".
std::string taken(const CLI::App& command) {
  std::string words;
  for (const CLI::Option* option :
       command.get_options([](const CLI::Option* o) { return o->get_positional(); }))
    words += (words.empty() ? "" : " ") + option->get_name();
  return words.empty() ? "only options can be given" : "only " + words + " can be given";
}

}  // namespace

std::string explain(const CLI::App& app, const std::exception& error) {
  const CLI::App& command = deepest(app);
  const std::string help = "; see " + pathOf(app) + " --help";
  for (const std::string& word : app.remaining(true)) {
    if (word.size() > 2 && word.starts_with("--")) return unknown("option", word, optionsOf(command));
    if (word.size() > 1 && word.starts_with('-')) return unknown("option", word, {}) + help;
    const std::vector<std::string> names = commandsOf(command);
    if (!names.empty()) return noCommand(word, names);
    return quoted(word) + " is too much: " + taken(command) + help;
  }
  return error.what() + help;
}

std::string noCommand(const std::string& word, const std::vector<std::string>& words) {
  return unknown("command", word, words);
}
