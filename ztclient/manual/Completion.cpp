#include "ztclient/manual/ManPage.h"
#include "ztclient/manual/Options.h"

namespace {

std::string joined(const std::vector<std::string>& words, const std::string& separator) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? std::string() : separator) + word;
  return text;
}

std::vector<CompletionRow> rowsOf(const std::vector<CompletionRow>& table, const std::string& path,
                                  bool options) {
  std::vector<CompletionRow> rows;
  for (const CompletionRow& row : table) {
    if (row.path == path && row.name.empty() != options) rows.push_back(row);
  }
  return rows;
}

std::vector<std::string> namesOf(const std::vector<const CLI::App*>& commands) {
  std::vector<std::string> names;
  for (const CLI::App* command : commands) names.push_back(command->get_name());
  return names;
}

// How bash completes one row: "w words", "f" for files, "n" for nothing that it could know.
std::string bashAction(const CompletionRow& row) {
  if (row.kind == CompletionRow::words_) return "w " + joined(row.words, " ");
  return row.kind == CompletionRow::file ? "f" : "n";
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

std::string zshAction(const CompletionRow& row) {
  if (row.kind == CompletionRow::words_) {
    std::vector<std::string> words = row.words;
    for (std::string& word : words) {
      if (word.ends_with(':')) word.insert(word.size() - 1, "\\");
    }
    return "compadd -S \"\" -- " + joined(words, " ");
  }
  return row.kind == CompletionRow::file ? "_files" : " ";
}

std::string functionName(const std::string& path) {
  std::string name = "_ztclient";
  for (char c : path.empty() ? path : '_' + path) name += c == ' ' ? '_' : c;
  return name;
}

void writeZshRow(std::ostream& out, const CompletionRow& row) {
  out << " \\\n    '";
  if (row.name.empty()) {
    out << (row.repeated ? "*" : "") << ':' << described(row.description) << ':' << zshAction(row) << '\'';
    return;
  }
  out << row.name << (row.kind == CompletionRow::flag ? "[" : "=[") << described(row.description) << ']';
  if (row.kind != CompletionRow::flag) out << ":value:" << zshAction(row);
  out << '\'';
}

void writeZshFunction(std::ostream& out, const CLI::App& command, const std::string& path,
                      const std::vector<CompletionRow>& table) {
  const std::string function = functionName(path);
  const auto below = commandsOf(command);
  out << function << "() {\n";
  if (!below.empty()) out << "  local context state line\n  typeset -A opt_args\n";
  out << "  _arguments" << (below.empty() ? "" : " -C");
  for (const bool options : {true, false}) {
    for (const CompletionRow& row : rowsOf(table, path, options)) writeZshRow(out, row);
  }
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

std::string quotedForFish(const std::string& text) {
  std::string quoted = "'";
  for (char c : text) quoted += c == '\'' || c == '\\' ? std::string("\\") + c : std::string(1, c);
  return quoted + '\'';
}

// \param place of an argument, or "*" for all that are left; empty for an option.
void writeFishRow(std::ostream& out, const CompletionRow& row, const std::string& place) {
  out << "complete -c ztclient -n \"__ztclient_at '" << row.path << "'"
      << (place.empty() ? "" : " '" + place + "'") << '"';
  if (!row.name.empty()) out << " -l " << row.name.substr(2);
  if (!row.shortName.empty()) out << " -s " << row.shortName.substr(1);
  if (row.kind == CompletionRow::words_) out << " -x -a " << quotedForFish(joined(row.words, " "));
  if (row.kind == CompletionRow::file) out << (row.name.empty() ? " -F" : " -r -F");
  if (row.kind == CompletionRow::other && !row.name.empty()) out << " -x";
  if (!row.name.empty()) out << " -d " << quotedForFish(row.description);
  out << '\n';
}

}  // namespace

void writeBashCompletion(std::ostream& out, const CLI::App& app) {
  const std::vector<CompletionRow> table = completionTable(app);
  out << "# Completion of ztclient for bash.\n"
         "# Each row: what completes the value of an option, or the argument in its place (#0, #1, ...).\n"
         "_ztclient_action() {\n  case $1 in\n";
  forCommands(app, [&](const CLI::App&, const std::string& path) {
    for (const CompletionRow& row : rowsOf(table, path, true)) {
      if (row.kind != CompletionRow::flag)
        out << "    '" << path << ' ' << row.name << "') action='" << bashAction(row) << "' ;;\n";
    }
    size_t place = 0;
    for (const CompletionRow& row : rowsOf(table, path, false))
      out << "    '" << path << " #" << (row.repeated ? "'*" : std::to_string(place++) + "'") << ") action='"
          << bashAction(row) << "' ;;\n";
  });
  out << "    *) action='' ;;\n  esac\n}\n_ztclient_words() {\n  case $1 in\n";
  forCommands(app, [&](const CLI::App& command, const std::string& path) {
    std::vector<std::string> names;
    for (const CompletionRow& row : rowsOf(table, path, true)) names.push_back(row.name);
    out << "    '" << path << "') below='" << joined(namesOf(commandsOf(command)), " ") << "' options='"
        << joined(names, " ") << "' ;;\n";
  });
  out << R"(  esac
}
_ztclient() {
  local current=${COMP_WORDS[COMP_CWORD]} path='' action='' below='' options='' word value i place=0 skip=0
  _ztclient_words ''
  for ((i = 1; i < COMP_CWORD; ++i)); do
    word=${COMP_WORDS[i]}
    if ((skip)) || [[ $word == = ]]; then
      [[ $word == = ]] && skip=1 || skip=0
      continue
    fi
    if [[ $word == -* ]]; then
      _ztclient_action "$path $word"
      [[ $action ]] && skip=1
    elif [[ " $below " == *" $word "* ]]; then
      path=${path:+$path }$word
      _ztclient_words "$path"
    else
      ((++place))
    fi
  done
  # A value behind its option, with or without '=', which bash makes a word of its own.
  word=${COMP_WORDS[COMP_CWORD - 1]}
  value=$current
  if [[ $current == = ]]; then value=''; fi
  if [[ $word == = ]]; then word=${COMP_WORDS[COMP_CWORD - 2]}; fi
  if [[ $current == --*=* ]]; then word=${current%%=*} value=${current#*=}; fi
  action=''
  if [[ $current == = ]]; then word=${COMP_WORDS[COMP_CWORD - 1]}; fi
  if [[ $word == --* ]]; then _ztclient_action "$path $word"; fi
  if [[ ! $action && $current != -* && ! $below ]]; then _ztclient_action "$path #$place"; fi
  case $action in
    w*)
      mapfile -t COMPREPLY < <(compgen -W "${action#w }" -- "$value")
      if [[ $current == --*=* ]]; then COMPREPLY=("${COMPREPLY[@]/#/${current%%=*}=}"); fi
      if [[ ${COMPREPLY[0]-} == *[=:] ]]; then compopt -o nospace 2>/dev/null; fi
      ;;
    f)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -f -- "$value")
      ;;
    n) COMPREPLY=() ;;
    *)
      if [[ $current == -* ]]; then below=$options; fi
      mapfile -t COMPREPLY < <(compgen -W "$below" -- "$current")
      ;;
  esac
}
complete -F _ztclient ztclient
)";
}

void writeZshCompletion(std::ostream& out, const CLI::App& app) {
  const std::vector<CompletionRow> table = completionTable(app);
  out << "#compdef ztclient\n# Completion of ztclient for zsh.\n\n";
  forCommands(app, [&](const CLI::App& command, const std::string& path) {
    writeZshFunction(out, command, path, table);
  });
  out << "_ztclient \"$@\"\n";
}

void writeFishCompletion(std::ostream& out, const CLI::App& app) {
  const std::vector<CompletionRow> table = completionTable(app);
  out << R"(# Completion of ztclient for fish.
# True when the words so far lead to this command and no further, and, with a second argument, as many arguments of its
# own stand there.
function __ztclient_at
    set -l path
    set -l place 0
    set -l skip 0
    for word in (commandline -opc)[2..-1]
        if test $skip = 1
            set skip 0
        else if string match -q -- '-*' $word
            contains -- (string trim -- "$path $word") $__ztclient_valued; and set skip 1
        else if contains -- (string trim -- "$path $word") $__ztclient_paths
            set -a path $word
        else
            set place (math $place + 1)
        end
    end
    test "$path" = "$argv[1]"; or return 1
    test (count $argv) = 1; or test "$argv[2]" = '*'; or test "$argv[2]" = $place
end
set -g __ztclient_paths)";
  forCommands(app, [&](const CLI::App&, const std::string& path) {
    if (!path.empty()) out << ' ' << quotedForFish(path);
  });
  out << "\nset -g __ztclient_valued";
  for (const CompletionRow& row : table) {
    if (!row.name.empty() && row.kind != CompletionRow::flag)
      out << ' ' << quotedForFish(row.path.empty() ? row.name : row.path + ' ' + row.name);
  }
  out << "\ncomplete -c ztclient -f\n";
  forCommands(app, [&](const CLI::App& command, const std::string& path) {
    for (const CLI::App* below : commandsOf(command))
      out << "complete -c ztclient -n \"__ztclient_at '" << path << "'\" -a " << below->get_name() << " -d "
          << quotedForFish(below->get_description()) << '\n';
    for (const CompletionRow& row : rowsOf(table, path, true)) writeFishRow(out, row, "");
    size_t place = 0;
    for (const CompletionRow& row : rowsOf(table, path, false))
      writeFishRow(out, row, row.repeated ? "*" : std::to_string(place++));
  });
}
