#include "ztclient/manual/ManPage.h"
#include "ztclient/manual/Options.h"

namespace {

// What may follow a command: the commands below it, else its options.
std::string wordsAfter(const CLI::App& command) {
  std::string words;
  for (const CLI::App* below : commandsOf(command)) words += below->get_name() + ' ';
  for (const CLI::Option* option : command.get_options()) {
    if (!longName(*option).empty()) words += longName(*option) + ' ';
  }
  words.pop_back();
  return words;
}

std::string joined(const std::vector<std::string>& words, char separator) {
  std::string text;
  for (const std::string& word : words)
    text += (text.empty() ? std::string() : std::string(1, separator)) + word;
  return text;
}

// A text inside single quotes and the brackets of an argument's description.
std::string described(const std::string& text) {
  std::string escaped;
  for (char c : text) {
    if (c == '[' || c == ']' || c == ':') escaped += '\\';
    escaped += c == '\'' ? std::string("'\\''") : std::string(1, c);
  }
  return escaped;
}

std::string functionName(const std::string& path) {
  std::string name = "_ztclient";
  for (char c : path.empty() ? path : '_' + path) name += c == ' ' ? '_' : c;
  return name;
}

void writeZshOption(std::ostream& out, const CLI::Option& option) {
  const std::string name = longName(option);
  if (name.empty()) {
    const bool several = option.get_items_expected_max() > 1;
    out << " \\\n    '" << (several ? "*" : "") << ':' << described(option.get_name()) << ":_files'";
    return;
  }
  out << " \\\n    '" << name << '[' << described(option.get_description()) << ']';
  const std::vector<std::string> choices = choicesOf(option);
  if (!choices.empty())
    out << ":value:(" << joined(choices, ' ') << ')';
  else if (takesValue(option))
    out << ":value:_files";
  out << '\'';
}

void writeZshFunction(std::ostream& out, const CLI::App& command, const std::string& path) {
  const std::string function = functionName(path);
  const auto below = commandsOf(command);
  out << function << "() {\n";
  if (!below.empty()) out << "  local context state line\n  typeset -A opt_args\n";
  out << "  _arguments" << (below.empty() ? "" : " -C");
  for (const CLI::Option* option : command.get_options()) writeZshOption(out, *option);
  if (below.empty()) {
    out << "\n}\n\n";
    return;
  }
  out << " \\\n    '1:command:->command' \\\n    '*::argument:->argument'\n  case $state in\n    command)\n"
      << "      local commands=(\n";
  for (const CLI::App* next : below)
    out << "        '" << next->get_name() << ':' << described(next->get_description()) << "'\n";
  out << "      )\n      _describe command commands\n      ;;\n    argument) " << function
      << "_${line[1]} ;;\n  esac\n}\n\n";
}

}  // namespace

void writeBashCompletion(std::ostream& out, const CLI::App& app) {
  out << "# Completion of ztclient for bash.\n_ztclient() {\n"
      << "  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} path='' words='' "
         "i\n"
      << "  for ((i = 1; i < COMP_CWORD; ++i)); do\n    case \"$path ${COMP_WORDS[i]}\" in\n";
  forCommands(app, [&](const CLI::App&, const std::string& path) {
    if (!path.empty()) out << "      \" " << path << "\") path+=\" ${COMP_WORDS[i]}\" ;;\n";
  });
  out << "    esac\n  done\n  case \"$path $previous\" in\n";
  forCommands(app, [&](const CLI::App& command, const std::string& path) {
    for (const CLI::Option* option : command.get_options()) {
      const std::vector<std::string> choices = choicesOf(*option);
      if (choices.empty() || longName(*option).empty()) continue;
      out << "    \" " << path << ' ' << longName(*option)
          << "\")\n      mapfile -t COMPREPLY < <(compgen -W \"" << joined(choices, ' ')
          << "\" -- \"$current\")\n      return\n      ;;\n";
    }
  });
  out << "  esac\n  case $path in\n";
  forCommands(app, [&](const CLI::App& command, const std::string& path) {
    out << "    \"" << (path.empty() ? "" : " ") << path << "\") words=\"" << wordsAfter(command)
        << "\" ;;\n";
  });
  out << "  esac\n  if [[ $current != -* && $words == --* ]]; then\n"
      << "    mapfile -t COMPREPLY < <(compgen -f -- \"$current\")\n  else\n"
      << "    mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")\n  fi\n}\n"
      << "complete -o filenames -F _ztclient ztclient\n";
}

void writeZshCompletion(std::ostream& out, const CLI::App& app) {
  out << "#compdef ztclient\n# Completion of ztclient for zsh.\n\n";
  forCommands(
      app, [&](const CLI::App& command, const std::string& path) { writeZshFunction(out, command, path); });
  out << "_ztclient \"$@\"\n";
}
