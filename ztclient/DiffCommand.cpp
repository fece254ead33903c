// ztclient diff: two result files compared.
#include <iostream>
#include <memory>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Paths.h"
#include "ztbaseclient/tools/CDiffFiles.h"
#include "ztclient/Commands.h"
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
};

// Shows how far the comparison is.
class WatchedDiff : public CDiffFiles {
 public:
  explicit WatchedDiff(const InputFile& file1) : length_(file1.length()) {}

 protected:
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

int run(const Options& options) {
  if (options.file1 == "-" && options.file2 == "-") {
    throw tovin::Exception(L"Standard input can be only one of the files");
  }
  const InputFile file1(options.file1), file2(options.file2);
  const bool first = canOpen(file1), second = canOpen(file2);
  if (!first || !second) return commands::trouble;
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
  diff->add_flag("--binary", options->binary, "Compare byte by byte")->excludes(tolerance);
  diff->footer(
      "Example: ztclient diff expected.txt result.txt --tolerance 4\nExit status 1: the files differ, and "
      "the report is printed.");
  diff->callback([options, &status] { status = run(*options); });
}
