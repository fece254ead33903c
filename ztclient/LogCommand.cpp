// ztclient log: the entries of a job's console log, of one that is still being written too.
#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "tovinCore/Exception.h"
#include "tovinCore/platform/Console.h"
#include "tovinCore/platform/Paths.h"
#include "ztbaseclient/tools/CConsoleReader.h"
#include "ztclient/Commands.h"
#include "ztclient/answers/Json.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/input/InputFile.h"
#include "ztclient/terminal/ProgressBar.h"
#include "ztcore/ztFile.h"

namespace {

constexpr auto pause = std::chrono::milliseconds(200);

struct Options {
  std::string file;
  int64_t position = 0;
  bool json = false;
  bool follow = false;
};

// What is printed goes out in large pieces, and all of it before the printer does.
class Printer {
 public:
  explicit Printer(bool json) : json_(json) {}
  ~Printer() { flush(); }

  /// False, and nothing is printed, when there is no entry, or none that is `wanted`.
  template <class Wanted>
  bool printNext(CConsoleReader& reader, Wanted&& wanted) {
    const size_t before = text_.size();
    if (!(json_ ? addJson(reader) : addText(reader)) || !wanted()) {
      text_.resize(before);
      return false;
    }
    if (text_.size() >= pieceSize) flush();
    return true;
  }

 private:
  static constexpr size_t pieceSize = size_t{1} << 16;

  bool addJson(CConsoleReader& reader) {
    Json values = Json::array();
    const auto add = [&](std::string_view name, std::string_view value) { values.push_back({name, value}); };
    if (!reader.VisitNextEntry(add)) return false;
    text_ += toText({{"values", std::move(values)}, {"position", reader.GetPosition()}}) + '\n';
    return true;
  }

  bool addText(CConsoleReader& reader) {
    const auto add = [&](std::string_view name, std::string_view value) {
      text_.append(name).append(": ").append(value).append("\n");
    };
    if (!reader.VisitNextEntry(add)) return false;
    text_ += '\n';
    return true;
  }

  void flush() {
    std::cout.write(text_.data(), static_cast<std::streamsize>(text_.size())).flush();
    text_.clear();
  }

  bool json_;
  std::string text_;
};

// The reader does not tell why it has no source, so it is tried again.
tovin::Exception openFailure(const wchar_t* name) {
  ztFile::CanOpen(name, ztFile::ForReading);
  return ztFile::OpenFailure(L"Unable to open file %ls", name);
}

std::unique_ptr<CConsoleReader> open(const wchar_t* name, int64_t position) {
  auto reader = std::make_unique<CConsoleReader>(name, position);
  if (!reader->HasSource()) throw openFailure(name);
  return reader;
}

void show(const Options& options) {
  const InputFile file(options.file);
  const auto reader = open(file.name(), options.position);
  const uint64_t length = file.length();
  std::optional<ProgressBar> bar;
  if (!tovin::platform::isOutputTerminal())
    bar.emplace();  // else the entries themselves are to be seen there
  Printer printer(options.json);
  while (printer.printNext(*reader, [] { return true; })) {
    if (bar) bar->show(static_cast<uint64_t>(reader->GetPosition()), length);
  }
}

void printComplete(CConsoleReader& reader, bool json) {
  Printer printer(json);
  while (printer.printNext(reader, [&] { return reader.WasEntryComplete(); })) continue;
  reader.Resume();
}

// Until the program is stopped. A log that has become shorter, or is not there for a while, has begun anew.
void follow(const Options& options) {
  if (options.file == "-") throw tovin::Exception(L"Standard input cannot be followed");
  const std::wstring name = tovin::platform::fileName(options.file);
  auto reader = open(name.c_str(), options.position);
  for (int64_t seen = -1; std::cout; std::this_thread::sleep_for(pause)) {
    const int64_t length = lengthOf(name.c_str());
    if (length == seen) continue;
    if (length < seen) reader.reset();
    seen = length;
    if (!reader && length > 0) reader = open(name.c_str(), 0);
    if (reader) printComplete(*reader, options.json);
  }
}

}  // namespace

void commands::addLog(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* log = app.add_subcommand("log", "Show the entries of a job's console log");
  arguments::addFile(*log, "FILE", options->file, "The log; - for standard input")->required();
  arguments::addNumber(*log, "--position", options->position, "Begin at this byte")->capture_default_str();
  log->add_flag("--json", options->json, "One JSON object an entry, each on its own line");
  log->add_flag("--follow", options->follow, "Go on with what is still written; only complete entries");
  log->footer("Example: ztclient log job.log --json --follow");
  log->callback([options, &status] {
    options->follow ? follow(*options) : show(*options);
    status = done;
  });
}
