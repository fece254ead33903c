#include "ztclient/arguments/HelpText.h"

#include <algorithm>
#include <sstream>

#include "ztclient/arguments/Arguments.h"
#include "ztclient/terminal/Terminal.h"

namespace {

constexpr size_t column = 28;
constexpr size_t fewest = 20;

// The words of a text in lines that end before the width, the first beginning at column `at`, the others at
// `margin`.
std::string wrapped(const std::string& text, size_t at, size_t margin, size_t width) {
  std::string out;
  std::istringstream words(text);
  bool first = true;
  for (std::string word; words >> word; first = false) {
    if (!first && at + 1 + word.size() > width) {
      out += '\n' + std::string(margin, ' ');
      at = margin;
    } else if (!first) {
      out += ' ';
      ++at;
    }
    out += word;
    at += word.size();
  }
  return out;
}

std::string entry(const std::string& term, const std::string& text) {
  const size_t width = std::max(terminal::textWidth(), column + fewest);
  std::string out = "  " + term;
  if (out.size() + 2 > column)
    out += '\n' + std::string(column, ' ');
  else
    out.append(column - out.size(), ' ');
  return out + wrapped(text, column, column, width) + '\n';
}

// Lines of examples are for copying, and stay whole.
std::string lines(const std::string& text) {
  std::string out;
  std::istringstream all(text);
  for (std::string line; std::getline(all, line);) {
    const bool copied = line.starts_with("Example: ") || line.starts_with(' ');
    out += (copied ? line : wrapped(line, 0, 0, terminal::textWidth())) + '\n';
  }
  return out;
}

std::string section(const std::string& title, const std::string& entries) {
  return entries.empty() ? entries : '\n' + title + ":\n" + entries;
}

std::vector<CLI::App*> commandsOf(const CLI::App& app) {
  auto& all = const_cast<CLI::App&>(app);
  return all.get_subcommands([](CLI::App*) { return true; });
}

std::string optionsOf(const CLI::App& app, bool positional) {
  std::string out;
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_positional() == positional)
      out += entry(describe::term(*option), describe::text(*option));
  }
  return out;
}

std::string helpOf(const CLI::App& app, const std::string& name) {
  std::string commands;
  for (const CLI::App* command : commandsOf(app))
    commands += entry(command->get_name(), command->get_description());
  const std::string footer = app.get_footer();
  return lines(app.get_description()) + lines("Usage: " + name + ' ' + describe::usage(app)) +
         section("Arguments", optionsOf(app, true)) + section("Options", optionsOf(app, false)) +
         section("Commands", commands) + (footer.empty() ? footer : '\n' + lines(footer));
}

std::string helpOfAll(const CLI::App& app, const std::string& name) {
  std::string out = helpOf(app, name);
  for (const CLI::App* command : commandsOf(app))
    out += "\n\n" + helpOfAll(*command, name + ' ' + command->get_name());
  return out;
}

}  // namespace

std::string HelpText::make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const {
  return mode == CLI::AppFormatMode::All ? helpOfAll(*app, name) : helpOf(*app, name);
}

std::string describe::valueName(const CLI::Option& option) {
  if (option.get_items_expected_max() == 0) return {};
  const std::string type = option.get_type_name();
  return type.substr(0, type.find(':'));
}

std::string describe::term(const CLI::Option& option) {
  if (option.get_positional()) return option.get_name();
  std::string names;
  for (const std::string& name : option.get_snames()) names += "-" + name + ", ";
  names += "--" + option.get_lnames().front();
  const std::string value = valueName(option);
  return value.empty() ? names : names + ' ' + value;
}

std::string describe::text(const CLI::Option& option) {
  std::string text = option.get_description();
  if (option.get_required()) text += " (required)";
  if (!option.get_default_str().empty()) text += " [default: " + option.get_default_str() + "]";
  return text;
}

std::string describe::usage(const CLI::App& command) {
  if (!commandsOf(command).empty()) return "COMMAND [OPTION]... [ARGUMENT]...";
  std::string text = "[OPTION]...";
  for (const CLI::Option* option : command.get_options()) {
    if (!option->get_positional()) continue;
    const std::string several = option->get_items_expected_max() > 1 ? "..." : "";
    text += option->get_required() ? ' ' + option->get_name() + several
                                   : " [" + option->get_name() + ']' + several;
  }
  return text;
}
