// ztclient diff: two result files compared.
#include <iostream>
#include <memory>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/tools/CDiffFiles.h"
#include "ztclient/Commands.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/input/InputFile.h"
#include "ztclient/terminal/ProgressBar.h"

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
  std::cout << tovin::wideToUtf8(message) << (message.ends_with(L'\n') ? "" : "\n");
}

int run(const Options& options) {
  if (options.file1 == "-" && options.file2 == "-") {
    throw tovin::Exception(L"Standard input can be only one of the files");
  }
  const InputFile file1(options.file1), file2(options.file2);
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
    print(InputFile::asGiven(e.getMessage()));
    return commands::negative;
  }
}

}  // namespace

void commands::addDiff(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* diff = app.add_subcommand("diff", "Compare two result files");
  diff->add_option("FILE1", options->file1, "A file; - for standard input")->required();
  diff->add_option("FILE2", options->file2, "The file to compare it with")->required();
  arguments::addNumber(*diff, "--tolerance", options->tolerance,
                       "How many significant digits of decimal numbers must agree; 0 for all")
      ->capture_default_str();
  diff->add_flag("--binary", options->binary, "Compare byte by byte");
  diff->footer("Example: ztclient diff expected.txt result.txt --tolerance 4");
  diff->callback([options, &status] { status = run(*options); });
}
