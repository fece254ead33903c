// ztclient checksum: the digest of texts in their order.
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "tovinCore/Utf8.h"
#include "ztbaseclient/tools/ztChecksum.h"
#include "ztclient/Commands.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/input/InputFile.h"
#include "ztcore/ztStringReader.h"

namespace {

struct Options {
  std::vector<std::string> texts;
  std::string lines;
};

void addLines(ztChecksum& checksum, const InputFile& file) {
  ztStringReader reader(file.name());
  tovin::WideString line;
  while (reader.GetLine(line)) {
    line.setLength(line.getLength() - 1);
    checksum.AddString(line);
  }
}

void run(const Options& options) {
  ztChecksum checksum;
  for (const std::string& text : options.texts) {
    checksum.AddString(tovin::utf8ToWide(arguments::fromList(text)).c_str());
  }
  if (!options.lines.empty()) addLines(checksum, InputFile(options.lines));
  std::cout << tovin::wideToUtf8(checksum.GetChecksum()) << '\n';
}

}  // namespace

void commands::addChecksum(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* checksum = app.add_subcommand("checksum", "Print the digest of texts in their order");
  checksum->add_option("STRING", options->texts, "The texts")->type_name("TEXT");
  arguments::addFile(*checksum, "--lines", options->lines,
                     "Each line of this file, behind the texts given; - for standard input");
  checksum->footer(
      "Example: ztclient checksum user server\n"
      "The digest finds accidents. It protects against nobody: whoever changes the texts can make a fitting "
      "one.");
  checksum->callback([options, &status] {
    run(*options);
    status = done;
  });
}
