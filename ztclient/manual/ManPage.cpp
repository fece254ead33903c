#include "ztclient/manual/ManPage.h"

#include <sstream>

#include "ztclient/Version.h"
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

std::string valueName(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  return type.substr(0, type.find(':'));
}

std::string optionTerm(const CLI::Option& option) {
  std::string term = "\\fB" + plain(longName(option)) + "\\fR";
  for (const std::string& name : option.get_snames()) term = "\\fB\\-" + name + "\\fR, " + term;
  return takesValue(option) ? term + " \\fI" + plain(valueName(option)) + "\\fR" : term;
}

void writeOption(std::ostream& out, const CLI::Option& option) {
  const bool positional = longName(option).empty();
  out << ".TP\n"
      << (positional ? "\\fI" + plain(option.get_name()) + "\\fR" : optionTerm(option)) << '\n'
      << plain(option.get_description()) << (option.get_required() ? " (required)" : "") << '\n';
}

void writeSynopsis(std::ostream& out, const CLI::App& command, const std::string& path) {
  out << ".B ztclient " << plain(path) << "\n[\\fIoption\\fR]...";
  for (const CLI::Option* option : command.get_options()) {
    if (!longName(*option).empty()) continue;
    out << (option->get_required() ? " \\fI" : " [\\fI") << plain(option->get_name())
        << (option->get_required() ? "\\fR" : "\\fR]");
  }
  out << '\n';
}

// A footer's first line is the example, the others are text.
void writeFooter(std::ostream& out, const CLI::App& command) {
  constexpr std::string_view mark = "Example: ";
  std::istringstream lines(command.get_footer());
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(mark))
      out << ".PP\nExample:\n.PP\n.RS\n.nf\n" << plain(line.substr(mark.size())) << "\n.fi\n.RE\n";
    else
      out << ".PP\n" << plain(line) << '\n';
  }
}

void writeCommand(std::ostream& out, const CLI::App& command, const std::string& path) {
  out << ".SS " << plain(path) << '\n' << plain(command.get_description()) << ".\n.PP\n";
  writeSynopsis(out, command, path);
  for (const CLI::Option* option : command.get_options()) {
    if (longName(*option) != "--help" && longName(*option) != "--help-all") writeOption(out, *option);
  }
  writeFooter(out, command);
}

}  // namespace

void writeManPage(std::ostream& out, const CLI::App& app) {
  out << ".TH ZTCLIENT 1 \"\" \"ztclient " << version::text << "\" \"User Commands\"\n"
      << ".SH NAME\nztclient \\- client command of the workflow server\n"
      << ".SH SYNOPSIS\n.B ztclient\n\\fIcommand\\fR [\\fIoption\\fR]... [\\fIargument\\fR]...\n"
      << ".SH DESCRIPTION\nShows records, credentials and services, makes links and requests, sends files "
         "and "
         "compares results.\nText is UTF\\-8. Answers go to standard output, progress and errors to standard "
         "error.\nWhere a \\fIFILE\\fR is read, \\fB\\-\\fR stands for standard input.\n"
      << ".SH OPTIONS\n";
  for (const CLI::Option* option : app.get_options()) writeOption(out, *option);
  out << ".SH COMMANDS\n";
  forCommands(app, [&](const CLI::App& command, const std::string& path) {
    if (commandsOf(command).empty()) writeCommand(out, command, path);
  });
  out << ".SH EXIT STATUS\n.TP\n0\nDone.\n.TP\n1\nA negative answer: files differ, a checksum is wrong, "
         "nothing "
         "was found.\n.TP\n2\nWrong use or trouble; the reason is on standard error.\n"
      << ".SH ENVIRONMENT\n.TP\n.B NO_COLOR\nIf set to anything, no colours are used; without it they are "
         "used "
         "on terminals only.\n.TP\n.B SSL_CERT_FILE\nThe file of the authorities that servers' certificates "
         "are verified against.\n.TP\n.B TMPDIR\nWhere temporary files lie.\n";
}
