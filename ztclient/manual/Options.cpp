#include "ztclient/manual/Options.h"

#include "ztclient/arguments/Arguments.h"
#include "ztclient/arguments/HelpText.h"

namespace {

void visitBelow(const CLI::App& app, const std::string& path,
                const std::function<void(const CLI::App&, const std::string&)>& visit) {
  visit(app, path);
  for (const CLI::App* command : commandsOf(app))
    visitBelow(*command, path.empty() ? command->get_name() : path + ' ' + command->get_name(), visit);
}

}  // namespace

std::vector<const CLI::App*> commandsOf(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App*) { return true; });
}

void forCommands(const CLI::App& app, const std::function<void(const CLI::App&, const std::string&)>& visit) {
  visitBelow(app, "", visit);
}

std::string longName(const CLI::Option& option) {
  return option.get_lnames().empty() ? std::string() : "--" + option.get_lnames().front();
}

std::vector<CompletionRow> completionTable(const CLI::App& app) {
  std::vector<CompletionRow> table;
  forCommands(app, [&](const CLI::App& command, const std::string& path) {
    for (const CLI::Option* option : command.get_options()) {
      const std::string value = describe::valueName(*option);
      CompletionRow row{path, longName(*option), "", option->get_description(), CompletionRow::flag, {},
                        false};
      if (!option->get_snames().empty()) row.shortName = "-" + option->get_snames().front();
      row.words = arguments::wordsOf(*option);
      row.repeated = option->get_items_expected_max() > 1;
      if (option->get_positional()) row.description = option->get_name();
      if (!row.words.empty())
        row.kind = CompletionRow::words_;
      else if (value == "FILE" || value == "OUT")
        row.kind = CompletionRow::file;
      else if (!value.empty())
        row.kind = CompletionRow::other;
      table.push_back(std::move(row));
    }
  });
  return table;
}
