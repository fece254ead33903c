// ztclient log: the entries of a job's console log, of one that is still being written too.
#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
#include <thread>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Environment.h"
#include "ztbaseclient/tools/CConsoleEntry.h"
#include "ztbaseclient/tools/CConsoleReader.h"
#include "ztclient/Commands.h"
#include "ztclient/InputFile.h"
#include "ztclient/Json.h"
#include "ztclient/ProgressBar.h"
#include "ztcore/ztFile.h"

namespace {

constexpr auto pause = std::chrono::milliseconds(200);

struct Options {
  std::string file;
  int64_t position = 0;
  bool json = false;
  bool follow = false;
};

std::string utf8(const tovin::WideString& text) { return tovin::wideToUtf8(text.view()); }

void printJson(const CConsoleEntry& entry, int64_t position) {
  Json values = Json::array();
  for (const auto& pair : entry.GetPairs()) values.push_back({utf8(pair.name), utf8(pair.value)});
  std::cout << toText({{"values", std::move(values)}, {"position", position}}) << '\n';
}

void printText(const CConsoleEntry& entry) {
  for (const auto& pair : entry.GetPairs()) std::cout << utf8(pair.name) << ": " << utf8(pair.value) << '\n';
  std::cout << '\n';
}

void print(const Options& options, const CConsoleEntry& entry, int64_t position) {
  if (options.json)
    printJson(entry, position);
  else
    printText(entry);
}

CConsoleReader open(const wchar_t* name, int64_t position) {
  CConsoleReader reader(name, position);
  if (!reader.HasSource()) throw tovin::Exception(L"Unable to open file %ls", name);
  return reader;
}

int64_t lengthOf(const wchar_t* name) {
  ztFile file;
  if (!file.Open(name, ztFile::ForReading)) throw tovin::Exception(L"Unable to open file %ls", name);
  return file.GetLength();
}

void show(const Options& options) {
  const InputFile file(options.file);
  CConsoleReader reader = open(file.name(), options.position);
  const auto length = static_cast<uint64_t>(lengthOf(file.name()));
  std::optional<ProgressBar> bar;
  if (!tovin::platform::isOutputTerminal())
    bar.emplace();  // else the entries themselves are to be seen there
  CConsoleEntry entry;
  while (reader.GetNextEntry(entry)) {
    print(options, entry, reader.GetPosition());
    if (bar) bar->show(static_cast<uint64_t>(reader.GetPosition()), length);
  }
}

// Prints what is complete from a position on, and says where to go on.
int64_t printComplete(const Options& options, const wchar_t* name, int64_t position) {
  CConsoleReader reader = open(name, position);
  CConsoleEntry entry;
  while (reader.GetNextEntry(entry) && reader.WasEntryComplete()) print(options, entry, reader.GetPosition());
  std::cout.flush();
  return reader.GetResumePosition();
}

// Until the program is stopped. A log that has become shorter has begun anew.
void follow(const Options& options) {
  if (options.file == "-") throw tovin::Exception(L"Standard input cannot be followed");
  const std::wstring name = tovin::utf8ToWide(options.file);
  int64_t position = options.position;
  for (int64_t seen = -1; std::cout; std::this_thread::sleep_for(pause)) {
    const int64_t length = lengthOf(name.c_str());
    if (length == seen) continue;
    if (length < seen) position = 0;
    position = printComplete(options, name.c_str(), position);
    seen = length;
  }
}

}  // namespace

void commands::addLog(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* log = app.add_subcommand("log", "Show the entries of a job's console log");
  log->add_option("FILE", options->file, "The log; - for standard input")->required();
  log->add_option("--position", options->position, "Begin at this byte");
  log->add_flag("--json", options->json, "One JSON object an entry, each on its own line");
  log->add_flag("--follow", options->follow, "Go on with what is still written; only complete entries");
  log->footer("Example: ztclient log job.log --json --follow");
  log->callback([options, &status] {
    options->follow ? follow(*options) : show(*options);
    status = done;
  });
}
