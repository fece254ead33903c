#include "ztclient/manual/ManPage.h"

#include <sstream>

#include "ztclient/Version.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/arguments/HelpText.h"
#include "ztclient/manual/Options.h"

namespace {

// A text as the formatter shall show it: a hyphen that can be copied, no escapes, no request at a line's
// start.
std::string plain(const std::string& text) {
  std::string escaped;
  for (char c : text) {
    if (c == '\\')
      escaped += "\\e";
    else if (c == '-')
      escaped += "\\-";
    else
      escaped += c;
  }
  return escaped.starts_with('.') || escaped.starts_with('\'') ? "\\&" + escaped : escaped;
}

std::string optionTerm(const CLI::Option& option) {
  if (option.get_positional()) return "\\fI" + plain(option.get_name()) + "\\fR";
  std::string term = "\\fB" + plain(longName(option)) + "\\fR";
  for (const std::string& name : option.get_snames()) term = "\\fB\\-" + name + "\\fR, " + term;
  const std::string value = describe::valueName(option);
  return value.empty() ? term : term + " \\fI" + plain(value) + "\\fR";
}

void writeOption(std::ostream& out, const CLI::Option& option) {
  out << ".TP\n" << optionTerm(option) << '\n' << plain(describe::text(option)) << ".\n";
  const std::vector<std::string> words = arguments::wordsOf(option);
  if (words.empty()) return;
  std::string list;
  for (const std::string& word : words) list += (list.empty() ? "" : ", ") + plain(word);
  out << "Values: " << list << ".\n";
}

void writeSynopsis(std::ostream& out, const CLI::App& command, const std::string& path) {
  out << ".B ztclient " << plain(path) << "\n[\\fIoption\\fR]...";
  for (const CLI::Option* option : command.get_options()) {
    if (!option->get_positional()) continue;
    out << (option->get_required() ? " \\fI" : " [\\fI") << plain(option->get_name())
        << (option->get_required() ? "\\fR" : "\\fR]");
  }
  out << '\n';
}

void writeExample(std::ostream& out, const std::string& line) {
  out << ".PP\n.RS\n.nf\n" << plain(line) << "\n.fi\n.RE\n";
}

constexpr std::string_view exampleMark = "Example: ";

template <class Visit>
void forFooter(const CLI::App& command, Visit&& visit) {
  std::istringstream lines(command.get_footer());
  for (std::string line; std::getline(lines, line);) visit(line);
}

// The options that every command has are told once, at the top.
bool isEverywhere(const CLI::App& app, const CLI::Option& option) {
  return !longName(option).empty() && app.get_option_no_throw(longName(option)) != nullptr;
}

void writeCommand(std::ostream& out, const CLI::App& app, const CLI::App& command, const std::string& path) {
  out << ".SS " << plain(path) << '\n' << plain(command.get_description()) << ".\n.PP\n";
  writeSynopsis(out, command, path);
  for (const bool positional : {true, false}) {
    for (const CLI::Option* option : command.get_options()) {
      if (option->get_positional() == positional && !isEverywhere(app, *option)) writeOption(out, *option);
    }
  }
  bool told = false;
  forFooter(command, [&](const std::string& line) {
    if (line.starts_with(exampleMark)) return;
    told = told || line.starts_with("Exit status");
    out << ".PP\n" << plain(line) << '\n';
  });
  if (!told) out << ".PP\nExit status: 0 or 2.\n";
}

void writeExamples(std::ostream& out, const CLI::App& app) {
  out << ".SH EXAMPLES\n";
  bool first = true;
  forCommands(app, [&](const CLI::App& command, const std::string& path) {
    forFooter(command, [&](const std::string& line) {
      if (!line.starts_with(exampleMark) || path.empty()) return;
      out << (first ? "" : ".PP\n") << plain(command.get_description()) << ":\n";
      first = false;
      writeExample(out, line.substr(exampleMark.size()));
    });
  });
}

// What no option tells.
constexpr const char* conventions = R"(.SH EXIT STATUS
.TP
0
Done.
.TP
1
A negative answer: files differ, a checksum is wrong, nothing was found; each command tells which.
.TP
2
Wrong use or trouble; the reason is on standard error.
.TP
128+\fIn\fR
Ended by the signal \fIn\fR; 141 when the reader of a pipe has left.
.SH JSON
With \fB\-\-json\fR one document, or one object a line, in UTF\-8 with the keys always in the same order:
.TP
\fBwsdl\fR
{"targetNamespace", "service", "ports", "warnings"}; or {"error"} and exit status 2.
.TP
\fBtree\fR
a line a node: {"depth", "class", "name", "properties": [{"name", "type", "value", "flags"}]}.
.TP
\fBlog\fR
a line an entry: {"values": [["name", "value"]], "position"}.
.TP
\fBcredentials show\fR
the fields of the string, "formatVersion" to "roleBitCount".
.SH ENVIRONMENT
.TP
.B ZTCLIENT_SESSION
The session id for \fBupload\fR and \fBlink \-\-as session\fR.
.TP
.B NO_COLOR
If set to anything, no colours are used unless \fB\-\-color=always\fR asks for them.
.TP
.B TERM
"dumb" means neither colours nor a progress bar.
.TP
.B COLUMNS
How wide help is, at most 100.
.TP
.B TMPDIR
Where standard input is kept while it is read twice; /tmp if it is not set.
.TP
.BR http_proxy ", " https_proxy ", " ALL_PROXY ", " no_proxy
How the server is reached.
.TP
.B SSL_CERT_FILE
The file of the authorities that servers' certificates are verified against.
.TP
.B XDG_CONFIG_HOME
Where the settings lie that the library reads; ~/.config if it is not set.
.SH FILES
A \fIFILE\fR of \fBtree\fR and \fBquery\fR is an XML document or a node record; its first byte tells.
Of XML there are elements and attributes: text content, CDATA sections and comments are passed over.
A file that is written takes the place of an old one in one step.
What is read twice from standard input or a pipe lies meanwhile in a file without a name, which goes with the command.
.SH NOTES
Checksums find accidents and protect against nobody.
Whoever sees a credentials string or a session id can use it: keep both out of command lines.
.SH SEE ALSO
.BR diff (1),
.BR xmllint (1),
.BR curl (1)
)";

// Running text in lines that editors and reviewers can read; where it is broken means nothing.
void writeBroken(std::ostream& out, const std::string& page) {
  constexpr size_t longest = 80;
  bool isFilled = true;
  std::istringstream lines(page);
  for (std::string line; std::getline(lines, line);) {
    if (line == ".nf") isFilled = false;
    if (line == ".fi") isFilled = true;
    const bool isText = isFilled && !line.starts_with('.');
    while (isText && line.size() > longest) {
      size_t blank = line.rfind(' ', longest);
      // What begins with one of these would be a request.
      while (blank != line.npos && blank > 0 && (line[blank + 1] == '.' || line[blank + 1] == '\''))
        blank = line.rfind(' ', blank - 1);
      if (blank == line.npos || blank == 0) break;
      out << line.substr(0, blank) << '\n';
      line.erase(0, blank + 1);
    }
    out << line << '\n';
  }
}

}  // namespace

void writeManPage(std::ostream& to, const CLI::App& app, const std::string& date) {
  std::ostringstream out;
  out << ".TH ZTCLIENT 1 " << date << " \"ztclient " << version::text << "\" \"User Commands\"\n"
      << ".SH NAME\nztclient \\- client command of the workflow server\n"
      << ".SH SYNOPSIS\n.B ztclient\n\\fIcommand\\fR [\\fIoption\\fR]... [\\fIargument\\fR]...\n"
      << ".SH DESCRIPTION\nShows records, credentials and services, makes links and requests, sends files "
         "and\n"
         "compares results.\nText is UTF\\-8. Answers go to standard output, progress and errors to standard "
         "error.\nWhere a \\fIFILE\\fR is read, \\fB\\-\\fR stands for standard input.\n"
         "On a terminal, control characters in what is shown are written as escapes.\n"
      << ".SH OPTIONS\nAll but \\fB\\-\\-version\\fR and \\fB\\-\\-help\\-all\\fR may stand behind a command "
         "too.\n";
  for (const CLI::Option* option : app.get_options()) writeOption(out, *option);
  out << ".SH COMMANDS\n";
  forCommands(app, [&](const CLI::App& command, const std::string& path) {
    if (commandsOf(command).empty()) writeCommand(out, app, command, path);
  });
  writeExamples(out, app);
  out << conventions;
  writeBroken(to, out.str());
}
