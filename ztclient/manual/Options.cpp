#include "ztclient/manual/Options.h"

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

bool takesValue(const CLI::Option& option) { return option.get_items_expected_max() > 0; }

// The parser tells them in the type's name: "TEXT:{nodes,properties}".
std::vector<std::string> choicesOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const size_t begin = type.find('{'), end = type.find('}');
  if (begin == std::string::npos || end == std::string::npos) return {};
  return CLI::detail::split(type.substr(begin + 1, end - begin - 1), ',');
}
