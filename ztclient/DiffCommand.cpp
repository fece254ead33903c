// ztclient diff: two result files compared.
#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Console.h"
#include "tovinCore/platform/Paths.h"
#include "ztbaseclient/tools/CDiffFiles.h"
#include "ztbaseclient/tools/FileDifferences.h"
#include "ztclient/Commands.h"
#include "ztclient/answers/DifferencePrinter.h"
#include "ztclient/answers/Json.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/input/GivenNames.h"
#include "ztclient/input/InputFile.h"
#include "ztclient/terminal/Messages.h"
#include "ztclient/terminal/ProgressBar.h"
#include "ztcore/ztFile.h"

namespace {

struct Options {
  std::string file1;
  std::string file2;
  int tolerance = CDiffFiles::DefaultTolerance;
  bool binary = false;
  bool all = false;
  bool json = false;
  bool summary = false;
  std::string ignored;
  std::string delimiter;
  differences::Options how;
};

// Shows how far the comparison is.
class WatchedDiff : public CDiffFiles {
 public:
  explicit WatchedDiff(const InputFile& file1) : length_(file1.length()) {}

  using CDiffFiles::FileIsBinary;
  void Compared(int64_t done) const override { bar_.show(static_cast<uint64_t>(done), length_); }

 private:
  uint64_t length_;
  mutable ProgressBar bar_;
};

void print(const std::wstring& message) {
  std::cout << tovin::platform::fileNameBytes(message) << (message.ends_with(L'\n') ? "" : "\n");
}

// The library takes two files that cannot be opened for equal.
bool canOpen(const InputFile& file) {
  if (ztFile::CanOpen(file.name(), ztFile::ForReading)) return true;
  messages::error(messages::textOf(ztFile::OpenFailure(L"Unable to open file %ls", file.name())));
  return false;
}

// What --all says of files that are no text.
int reportBinary(const Options& options, const std::wstring& message) {
  if (options.json)
    std::cout << toText({{"kind", "binary"}, {"text", tovin::platform::fileNameBytes(message)}}) << '\n';
  else
    print(message);
  return commands::negative;
}

int findAll(const Options& options, const InputFile& file1, const InputFile& file2) {
  using Form = DifferencePrinter::Form;
  const Form form = options.json      ? options.summary ? Form::jsonSummary : Form::json
                    : options.summary ? Form::summary
                                      : Form::list;
  DifferencePrinter printer(form);
  WatchedDiff files(file1);
  if (files.FileIsBinary(file1.name())) {
    try {
      files.CompareFilesBinary(file1.name(), file2.name());
    } catch (const tovin::DiffErrorException& e) {
      return reportBinary(options, givenNames::in(e.getMessage()));
    }
    printer.finish({});
    return commands::done;
  }
  differences::Options how = options.how;
  for (size_t at = 0; at < options.ignored.size();) {
    const size_t end = std::min(options.ignored.find(',', at), options.ignored.size());
    how.ignoredColumns.push_back(options.ignored.substr(at, end - at));
    at = end + 1;
  }
  if (!options.delimiter.empty()) how.delimiter = options.delimiter == "\\t" ? '\t' : options.delimiter[0];
  const bool barShows = !tovin::platform::isOutputTerminal();  // else the differences are to be seen there
  const differences::Summary summary = differences::find(
      file1.name(), file2.name(), how, [&](const differences::Line& line) { printer.print(line); },
      [&](int64_t done) {
        if (barShows) files.Compared(done);
      });
  printer.finish(summary);
  return summary.isDifferent() ? commands::negative : commands::done;
}

int run(const Options& options) {
  if (options.file1 == "-" && options.file2 == "-") {
    throw tovin::Exception(L"Standard input can be only one of the files");
  }
  const InputFile file1(options.file1), file2(options.file2);
  const bool first = canOpen(file1), second = canOpen(file2);
  if (!first || !second) return commands::trouble;
  if (options.all) return findAll(options, file1, file2);
  try {
    WatchedDiff files(file1);  // its bar is gone before anything is printed
    if (options.binary)
      files.CompareFilesBinary(file1.name(), file2.name());
    else
      files.CompareFiles(file1.name(), file2.name(), options.tolerance);
    return commands::done;
  } catch (const tovin::DiffWarningException& e) {
    print(e.getMessage());
    return commands::done;
  } catch (const tovin::DiffErrorException& e) {
    print(givenNames::in(e.getMessage()));
    return commands::negative;
  }
}

template <class Value>
void addDistance(CLI::App& diff, CLI::Option& all, const char* name, std::optional<Value>& value,
                 const char* help) {
  diff.add_option(name, value, help)->type_name("E")->check(CLI::NonNegativeNumber)->needs(&all);
}

// What goes with --all only.
void addAllOptions(CLI::App& diff, Options& options, CLI::Option& all) {
  arguments::addNumber(diff, "--context", options.how.context, "Show so many equal lines around a difference")
      ->check(CLI::Range(0, 1000))
      ->needs(&all);
  diff.add_flag("--summary", options.summary, "Only counts, the largest, by column, the first ten lines")
      ->needs(&all);
  diff.add_flag("--json", options.json,
                "One JSON object a difference, each on its own line, and one of the sums")
      ->needs(&all);
  diff.add_option("--ignore-columns", options.ignored,
                  "Pass over these, by name or number, with commas between")
      ->type_name("LIST")
      ->needs(&all);
  addDistance(diff, all, "--absolute", options.how.absolute, "Numbers this near are within tolerance");
  addDistance(diff, all, "--relative", options.how.relative,
              "Numbers whose distance by the smaller one is no more are within tolerance");
  diff.add_flag("--ignore-case", options.how.ignoreCase, "Take A to Z for a to z")->needs(&all);
  diff.add_flag("--ignore-blank-lines", options.how.ignoreBlankLines, "Pass over lines without text")
      ->needs(&all);
  diff.add_option("--key", options.how.key,
                  "Compare rows that have the same text in this column, in any order")
      ->type_name("COLUMN")
      ->needs(&all);
  diff.add_option("--delimiter", options.delimiter, "Between fields stands this character, \\t for a tab")
      ->type_name("C")
      ->check(CLI::Validator(
          [](std::string& text) { return text.size() == 1 || text == "\\t" ? "" : "takes one character"; },
          ""))
      ->needs(&all);
}

}  // namespace

void commands::addDiff(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* diff = app.add_subcommand("diff", "Compare two result files");
  arguments::addFile(*diff, "FILE1", options->file1, "A file; - for standard input")->required();
  arguments::addFile(*diff, "FILE2", options->file2, "The file to compare it with; - for standard input")
      ->required();
  CLI::Option* tolerance =
      arguments::addNumber(*diff, "--tolerance", options->tolerance,
                           "How many significant digits of decimal numbers must agree; 0 for all")
          ->check(CLI::Validator(
              [](std::string& digits) { return digits.starts_with('-') ? "less than no digit" : ""; }, ""))
          ->capture_default_str();
  CLI::Option* binary =
      diff->add_flag("--binary", options->binary, "Compare byte by byte")->excludes(tolerance);
  CLI::Option* all = diff->add_flag("--all", options->all, "Show every difference, of lines that are aligned")
                         ->excludes(binary);
  addAllOptions(*diff, *options, *all);
  diff->footer(
      "Example: ztclient diff expected.txt result.txt --tolerance 4\nExit status 1: the files differ, and "
      "the report is printed.");
  diff->callback([options, tolerance, &status] {
    if (tolerance->count() > 0) options->how.tolerance = options->tolerance;
    status = run(*options);
  });
}
