// ztclient diff: two result files compared.
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <thread>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Console.h"
#include "tovinCore/platform/Paths.h"
#include "ztbaseclient/tools/CDiffFiles.h"
#include "ztbaseclient/tools/FileDifferences.h"
#include "ztclient/Commands.h"
#include "ztclient/answers/DifferencePrinter.h"
#include "ztclient/answers/DifferenceText.h"
#include "ztclient/answers/FolderPrinter.h"
#include "ztclient/answers/JUnitReport.h"
#include "ztclient/answers/Json.h"
#include "ztclient/answers/OutputFile.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/comparison/FolderComparison.h"
#include "ztclient/input/GivenNames.h"
#include "ztclient/input/InputFile.h"
#include "ztclient/pages/DifferencePage.h"
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
  bool recursive = false;
  std::vector<std::string> include;
  std::vector<std::string> exclude;
  unsigned jobs = 0;
  std::string junit;
  std::string html;
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

// The page of two files, made as their differences are found.
DifferencePage newPage(const Options& options) {
  return {options.file1, options.file2, differenceText::toleranceOf(options.how)};
}

void sayThereIsNoPage(const Options& options) {
  if (!options.html.empty()) messages::warn("no page is written of files that are no text");
}

int findAll(const Options& options, const InputFile& file1, const InputFile& file2) {
  using Form = DifferencePrinter::Form;
  const Form form = options.json      ? options.summary ? Form::jsonSummary : Form::json
                    : options.summary ? Form::summary
                                      : Form::list;
  DifferencePrinter printer(form);
  WatchedDiff files(file1);
  if (files.FileIsBinary(file1.name())) {
    sayThereIsNoPage(options);
    try {
      files.CompareFilesBinary(file1.name(), file2.name());
    } catch (const tovin::DiffErrorException& e) {
      return reportBinary(options, givenNames::in(e.getMessage()));
    }
    printer.finish({});
    return commands::done;
  }
  const bool barShows = !tovin::platform::isOutputTerminal();  // else the differences are to be seen there
  std::optional<DifferencePage> page;
  if (!options.html.empty()) page.emplace(newPage(options));
  const differences::Summary summary = differences::find(
      file1.name(), file2.name(), options.how,
      [&](const differences::Line& line) {
        printer.print(line);
        if (page) page->add(line);
      },
      [&](int64_t done) {
        if (barShows) files.Compared(done);
      });
  printer.finish(summary);
  if (page) outputFile::place(options.html, page->text(summary));
  return summary.isDifferent() ? commands::negative : commands::done;
}

int comparePlainly(const Options& options, const InputFile& file1, const InputFile& file2) {
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

std::string pageOf(DifferencePage page, const wchar_t* file1, const wchar_t* file2,
                   const differences::Options& how) {
  const differences::Summary sums =
      differences::find(file1, file2, how, [&page](const differences::Line& line) { page.add(line); });
  return page.text(sums);
}

JUnitReport reportOf(const Options& options, const PairComparison& comparison) {
  return {options.file1 + " and " + options.file2, comparison.tolerance()};
}

// The report of a pair of files stands beside what is printed of it.
void writeJUnit(const Options& options, const InputFile& file1, const InputFile& file2) {
  if (options.junit.empty()) return;
  const PairComparison comparison(options.how, options.binary);
  JUnitReport report = reportOf(options, comparison);
  report.add(options.file2, comparison.compare(file1.name(), file2.name()));
  outputFile::place(options.junit, report.text());
}

// So does the page of a plain comparison, which stops at the first difference.
void writePage(const Options& options, const InputFile& file1, const InputFile& file2) {
  if (options.html.empty()) return;
  if (WatchedDiff(file1).FileIsBinary(file1.name()))
    sayThereIsNoPage(options);
  else
    outputFile::place(options.html, pageOf(newPage(options), file1.name(), file2.name(), options.how));
}

int compareFiles(const Options& options) {
  if (options.file1 == "-" && options.file2 == "-") {
    throw tovin::Exception(L"Standard input can be only one of the files");
  }
  const InputFile file1(options.file1), file2(options.file2);
  writeJUnit(options, file1, file2);
  const bool first = canOpen(file1), second = canOpen(file2);
  if (!first || !second) return commands::trouble;
  if (options.all) return findAll(options, file1, file2);
  writePage(options, file1, file2);
  return comparePlainly(options, file1, file2);
}

std::vector<Glob> globsOf(const std::vector<std::string>& patterns) {
  std::vector<Glob> globs;
  for (const std::string& pattern : patterns) globs.emplace_back(arguments::fromList(pattern));
  return globs;
}

// A folder of pages: one for each pair of texts that is not equal, and index.html, which leads to them.
class FolderPages {
 public:
  explicit FolderPages(const Options& options) : options_(options), index_(options.file1, options.file2) {
    if (options.html.empty()) return;
    std::error_code error;
    std::filesystem::create_directories(tovin::platform::pathOf(options.html), error);
    if (!std::filesystem::is_directory(tovin::platform::pathOf(options.html), error))
      throw CLI::ValidationError("--html", "cannot make the folder " + options.html);
  }

  void add(const std::string& path, const PairResult& result) {
    using Verdict = PairResult::Verdict;
    if (options_.html.empty()) return;
    const bool hasLines =
        result.reason.empty() && (result.verdict == Verdict::within || result.verdict == Verdict::different);
    std::string page;
    if (hasLines) {
      page = std::to_string(++count_) + ".html";
      const std::string file1 = options_.file1 + '/' + path, file2 = options_.file2 + '/' + path;
      DifferencePage pair(file1, file2, differenceText::toleranceOf(options_.how), "index.html");
      outputFile::place(options_.html + '/' + page,
                        pageOf(std::move(pair), tovin::platform::fileName(file1).c_str(),
                               tovin::platform::fileName(file2).c_str(), options_.how));
    }
    index_.add(path, result, page);
  }

  void finish(const std::string& sums) const {
    if (!options_.html.empty()) outputFile::place(options_.html + "/index.html", index_.text(sums));
  }

 private:
  const Options& options_;
  FolderPage index_;
  size_t count_ = 0;
};

int compareFolders(const Options& options) {
  using Verdict = PairResult::Verdict;
  const FileFilter filter{globsOf(options.include), globsOf(options.exclude)};
  const FolderComparison folders(options.file1, options.file2, filter);
  const PairComparison comparison(options.how, options.binary);
  FolderPrinter printer(options.file1, options.file2, options.json);
  JUnitReport report = reportOf(options, comparison);
  const unsigned jobs = options.jobs > 0 ? options.jobs : std::max(1u, std::thread::hardware_concurrency());
  FolderPages pages(options);
  folders.run(comparison, jobs, [&](const std::string& path, const PairResult& result) {
    printer.print(path, result);
    if (!options.junit.empty()) report.add(path, result);
    pages.add(path, result);
  });
  pages.finish(printer.sums());
  printer.finish();
  if (!options.junit.empty()) outputFile::place(options.junit, report.text());
  if (printer.any(Verdict::unreadable)) return commands::trouble;
  const bool differ =
      printer.any(Verdict::different) || printer.any(Verdict::onlyFirst) || printer.any(Verdict::onlySecond);
  return differ ? commands::negative : commands::done;
}

int run(const Options& options) {
  if (options.junit == "-")
    throw CLI::ValidationError("--junit", "standard output has the answer already, name a file");
  outputFile::requireAnother("--junit", options.junit, {options.file1, options.file2});
  if (options.html == "-")
    throw CLI::ValidationError("--html", "standard output has the answer already, name a file");
  outputFile::requireAnother("--html", options.html, {options.file1, options.file2});
  return options.recursive ? compareFolders(options) : compareFiles(options);
}

// What belongs to the comparison of every field takes effect with one of the two only.
void requireFields(const CLI::App& diff, const Options& options) {
  if (options.all || (options.recursive && !options.binary)) return;
  for (const char* name : {"--ignore-columns", "--absolute", "--relative", "--ignore-case",
                           "--ignore-blank-lines", "--key", "--delimiter"}) {
    if (diff.get_option(name)->count() == 0) continue;
    if (options.binary) throw CLI::ExcludesError(name, "--binary");
    throw CLI::RequiresError(name, "--all or --recursive");
  }
  if (options.json) throw CLI::RequiresError("--json", "--all or --recursive");
}

void completeFields(Options& options) {
  for (size_t at = 0; at < options.ignored.size();) {
    const size_t end = std::min(options.ignored.find(',', at), options.ignored.size());
    options.how.ignoredColumns.push_back(options.ignored.substr(at, end - at));
    at = end + 1;
  }
  if (!options.delimiter.empty())
    options.how.delimiter = options.delimiter == "\\t" ? '\t' : options.delimiter[0];
}

template <class Value>
void addDistance(CLI::App& diff, const char* name, std::optional<Value>& value, const char* help) {
  diff.add_option(name, value, help)->type_name("E")->check(CLI::NonNegativeNumber);
}

// What says how fields are compared, of one pair with --all or of all in two folders.
void addFieldOptions(CLI::App& diff, Options& options) {
  diff.add_option("--ignore-columns", options.ignored,
                  "Pass over these, by name or number, with commas between")
      ->type_name("LIST");
  addDistance(diff, "--absolute", options.how.absolute, "Numbers this near are within tolerance");
  addDistance(diff, "--relative", options.how.relative,
              "Numbers whose distance by the smaller one is no more are within tolerance");
  diff.add_flag("--ignore-case", options.how.ignoreCase, "Take A to Z for a to z");
  diff.add_flag("--ignore-blank-lines", options.how.ignoreBlankLines, "Pass over lines without text");
  diff.add_option("--key", options.how.key,
                  "Compare rows that have the same text in this column, in any order")
      ->type_name("COLUMN");
  diff.add_option("--delimiter", options.delimiter, "Between fields stands this character, \\t for a tab")
      ->type_name("C")
      ->check(CLI::Validator(
          [](std::string& text) { return text.size() == 1 || text == "\\t" ? "" : "takes one character"; },
          ""));
}

CLI::Option* addGlobs(CLI::App& diff, const char* name, std::vector<std::string>& globs, const char* help) {
  return arguments::requireText(diff.add_option(name, globs, help))
      ->type_name("GLOB")
      ->allow_extra_args(false);
}

void addFolderOptions(CLI::App& diff, Options& options, CLI::Option& all) {
  CLI::Option* recursive =
      diff.add_flag("--recursive", options.recursive, "Compare two folders with all that they hold")
          ->excludes(&all);
  addGlobs(diff, "--include", options.include, "Only files of this name, or of this path where it has a /")
      ->needs(recursive);
  addGlobs(diff, "--exclude", options.exclude, "No such files, and nothing in such folders")
      ->needs(recursive);
  arguments::addNumber(diff, "--jobs", options.jobs,
                       "Compare so many files at once; all processors if not said")
      ->check(CLI::Range(1, 256))
      ->needs(recursive);
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
  arguments::addNumber(*diff, "--context", options->how.context,
                       "Show so many equal lines around a difference")
      ->check(CLI::Range(0, 1000))
      ->needs(all);
  diff->add_flag("--summary", options->summary, "Only counts, the largest, by column, the first ten lines")
      ->needs(all);
  diff->add_flag("--json", options->json,
                 "One JSON object a difference or file, each on its own line, and one of the sums");
  addFieldOptions(*diff, *options);
  addFolderOptions(*diff, *options, *all);
  arguments::addFile(*diff, "--junit", options->junit, "Write a report for CI servers, as JUnit does it",
                     "OUT");
  arguments::addFile(*diff, "--html", options->html,
                     "Write a page with the differences; with --recursive a folder of pages", "OUT")
      ->excludes(binary);
  diff->footer(
      "Example: ztclient diff expected.txt result.txt --tolerance 4\nExit status 1: the files differ, and "
      "the report is printed.");
  diff->callback([options, diff, tolerance, &status] {
    requireFields(*diff, *options);
    completeFields(*options);
    if (tolerance->count() > 0) options->how.tolerance = options->tolerance;
    status = run(*options);
  });
}
