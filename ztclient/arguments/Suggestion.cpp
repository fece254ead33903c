#include "ztclient/arguments/Suggestion.h"

#include <algorithm>
#include <vector>

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

// How many letters have to be put in, taken out, exchanged, or swapped with their neighbour.
size_t distance(const std::string& a, const std::string& b) {
  std::vector<std::vector<size_t>> rows(a.size() + 1, std::vector<size_t>(b.size() + 1));
  for (size_t i = 0; i <= a.size(); ++i) {
    for (size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        rows[i][j] = i + j;
        continue;
      }
      const size_t exchanged = rows[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      rows[i][j] = std::min({rows[i - 1][j] + 1, rows[i][j - 1] + 1, exchanged});
      const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (swapped) rows[i][j] = std::min(rows[i][j], rows[i - 2][j - 2] + 1);
    }
  }
  return rows[a.size()][b.size()];
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
  const std::string meant = nearest(word, words);
  return "no " + kind + ' ' + quoted(word) + (meant.empty() ? "" : "; did you mean " + quoted(meant) + "?");
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

std::string nearest(const std::string& word, const std::vector<std::string>& words) {
  constexpr size_t longest = 64;  // a longer word is no mistyped one
  if (words.empty() || word.size() > longest) return {};
  const auto best = std::min_element(words.begin(), words.end(), [&](const auto& a, const auto& b) {
    return distance(word, a) < distance(word, b);
  });
  const size_t letters = best->size() - std::min(best->find_first_not_of('-'), best->size());
  return distance(word, *best) <= std::max<size_t>(1, letters / 3) ? *best : std::string();
}

std::string explain(const CLI::App& app, const CLI::ParseError& error) {
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
