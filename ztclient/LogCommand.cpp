// ztclient log: the entries of a job's console log, of one that is still being written too.
#include <algorithm>
#include <chrono>
#include <functional>
#include <iostream>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tovinCore/Exception.h"
#include "tovinCore/platform/Console.h"
#include "tovinCore/platform/Environment.h"
#include "tovinCore/platform/Files.h"
#include "tovinCore/platform/Paths.h"
#include "ztbaseclient/tools/CConsoleReader.h"
#include "ztclient/Commands.h"
#include "ztclient/answers/Json.h"
#include "ztclient/answers/OutputFile.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/input/InputFile.h"
#include "ztclient/log/EntryFilter.h"
#include "ztclient/log/EntryTime.h"
#include "ztclient/log/LiveTable.h"
#include "ztclient/log/LogTable.h"
#include "ztclient/pages/LogPage.h"
#include "ztclient/terminal/Messages.h"
#include "ztclient/terminal/ProgressBar.h"
#include "ztclient/terminal/Terminal.h"
#include "ztcore/ztFile.h"

namespace {

constexpr auto pause = std::chrono::milliseconds(200);

struct Options {
  std::string file;
  int64_t position = 0;
  bool json = false;
  bool follow = false;
  bool csv = false;
  bool tsv = false;
  bool table = false;
  std::string columns;
  std::vector<std::string> where;
  std::string since;
  std::string until;
  std::string countBy;
  std::string html;

  bool isTable() const { return csv || tsv || table; }
};

// What is printed goes out in large pieces, and all of it before the printer does.
class Printer {
 public:
  Printer(bool json, EntryFilter& filter) : json_(json), filter_(filter) {}
  ~Printer() { flush(); }

  /// False, and nothing is printed, when there is no entry, or none that is `wanted`. Nothing is printed of
  /// one that the filter leaves out either.
  template <class Wanted>
  bool printNext(CConsoleReader& reader, Wanted&& wanted) {
    const size_t before = text_.size();
    filter_.begin();
    const bool goesOn = (json_ ? addJson(reader) : addText(reader)) && wanted();
    if (!goesOn || !filter_.holds()) {
      text_.resize(before);
      return goesOn;
    }
    if (text_.size() >= pieceSize) flush();
    return true;
  }

 private:
  static constexpr size_t pieceSize = size_t{1} << 16;

  bool addJson(CConsoleReader& reader) {
    Json values = Json::array();
    const auto add = [&](std::string_view name, std::string_view value) {
      filter_.see(name, value);
      values.push_back({name, value});
    };
    if (!reader.VisitNextEntry(add)) return false;
    text_ += toText({{"values", std::move(values)}, {"position", reader.GetPosition()}}) + '\n';
    return true;
  }

  bool addText(CConsoleReader& reader) {
    const auto add = [&](std::string_view name, std::string_view value) {
      filter_.see(name, value);
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
  EntryFilter& filter_;
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

// Not where the entries themselves are to be seen.
class Bar {
 public:
  explicit Bar(uint64_t length) : length_(length) {
    if (!tovin::platform::isOutputTerminal()) bar_.emplace();
  }
  void show(int64_t done) {
    if (bar_) bar_->show(static_cast<uint64_t>(done), length_);
  }

 private:
  uint64_t length_;
  std::optional<ProgressBar> bar_;
};

void show(const Options& options, EntryFilter& filter) {
  const InputFile file(options.file);
  const auto reader = open(file.name(), options.position);
  Bar bar(file.length());
  Printer printer(options.json, filter);
  while (printer.printNext(*reader, [] { return true; })) bar.show(reader->GetPosition());
}

// Visits at most `most` wanted entries. \return how many there were.
template <class Visit>
size_t forEntries(const InputFile& file, const Options& options, EntryFilter& filter, size_t most,
                  Visit&& visit) {
  const auto reader = open(file.name(), options.position);
  Bar bar(file.length());
  EntryPairs pairs;
  const auto add = [&](std::string_view name, std::string_view value) {
    filter.see(name, value);
    pairs.emplace_back(name, value);
  };
  size_t count = 0;
  while (count < most) {
    pairs.clear();
    filter.begin();
    if (!reader->VisitNextEntry(add)) break;
    bar.show(reader->GetPosition());
    if (!filter.holds()) continue;
    ++count;
    visit(pairs);
  }
  return count;
}

constexpr size_t all = std::numeric_limits<size_t>::max();

// Rows in the form that was asked for, below the columns' names.
class RowPrinter {
 public:
  explicit RowPrinter(const Options& options) : csv_(options.csv), tsv_(options.tsv) {}

  bool isAligned() const { return !csv_ && !tsv_; }
  // For aligned rows, of each row before the first is printed.
  void see(const TableRow& row) { aligned_.see(row); }

  void begin(const std::vector<std::string>& names) {
    const TableRow heading = tableText::headingOf(names);
    if (!isAligned()) return print(heading);
    aligned_.see(heading);
    const bool fits =
        tovin::platform::isOutputTerminal() || !tovin::platform::environmentVariable("COLUMNS").empty();
    const size_t leftOut = fits ? aligned_.fit(terminal::width()) : 0;
    if (leftOut > 0) messages::warn("columns without room at the end: " + std::to_string(leftOut));
    print(heading);
    aligned_.writeRule(std::cout);
  }

  void print(const TableRow& row) const {
    if (csv_)
      tableText::writeCsv(std::cout, row);
    else if (tsv_)
      tableText::writeTsv(std::cout, row);
    else
      aligned_.write(std::cout, row);
  }

 private:
  bool csv_, tsv_;
  tableText::Aligned aligned_;
};

void sayWhatIsUnused(const LogColumns& columns) {
  for (const std::string& name : columns.unused()) messages::warn("no entry has a " + name);
}

std::vector<std::string> splitAtCommas(const std::string& list) {
  std::vector<std::string> names;
  for (size_t at = 0; at <= list.size();) {
    const size_t end = std::min(list.find(',', at), list.size());
    names.push_back(list.substr(at, end - at));
    at = end + 1;
  }
  return names;
}

// The log is read once where the columns are given and their widths do not count, else twice.
void showTable(const Options& options, EntryFilter& filter) {
  const InputFile file(options.file);
  const bool given = !options.columns.empty();
  LogColumns columns = given ? LogColumns(splitAtCommas(options.columns)) : LogColumns();
  RowPrinter printer(options);
  size_t count = all;
  if (!given || printer.isAligned()) {
    count = forEntries(file, options, filter, all, [&](const EntryPairs& entry) {
      if (!given) columns.see(entry);
      if (printer.isAligned()) printer.see(columns.rowOf(entry));
    });
  }
  printer.begin(columns.names());
  count = forEntries(file, options, filter, count,
                     [&](const EntryPairs& entry) { printer.print(columns.rowOf(entry)); });
  if (count > 0) sayWhatIsUnused(columns);
}

struct ValueCount {
  std::optional<std::string> value;
  size_t count = 0;
};

// By the value of a name, the most frequent first; without one for the entries that have no such pair.
std::vector<ValueCount> countValues(const Options& options, EntryFilter& filter) {
  const InputFile file(options.file);
  LogColumns column({options.countBy});
  std::map<std::optional<std::string>, size_t> places;
  std::vector<ValueCount> counts;
  forEntries(file, options, filter, all, [&](const EntryPairs& entry) {
    const std::optional<std::string> value = column.rowOf(entry).front();
    const auto [place, isNew] = places.emplace(value, counts.size());
    if (isNew) counts.push_back({value});
    ++counts[place->second].count;
  });
  if (!counts.empty()) sayWhatIsUnused(column);
  std::ranges::stable_sort(counts, std::greater(), &ValueCount::count);
  return counts;
}

void showCounts(const Options& options, EntryFilter& filter) {
  const std::vector<ValueCount> counts = countValues(options, filter);
  if (options.json) {
    for (const ValueCount& each : counts)
      std::cout << toText({{"value", each.value ? Json(*each.value) : Json()}, {"count", each.count}})
                << '\n';
    return;
  }
  RowPrinter printer(options);
  std::vector<TableRow> rows;
  for (const ValueCount& each : counts) rows.push_back({std::to_string(each.count), each.value});
  if (printer.isAligned()) {
    for (const TableRow& row : rows) printer.see(row);
  }
  printer.begin({"count", options.countBy});
  for (const TableRow& row : rows) printer.print(row);
}

void printComplete(CConsoleReader& reader, bool json, EntryFilter& filter) {
  Printer printer(json, filter);
  while (printer.printNext(reader, [&] { return reader.WasEntryComplete(); })) continue;
  reader.Resume();
}

// What comes to a log that is followed: lines, or on a terminal a table that is drawn again.
class Follower {
 public:
  Follower(const Options& options, EntryFilter& filter) : options_(options), filter_(filter) {
    if (tovin::platform::isOutputTerminal() && !options.json && !terminal::isDumb()) table_.emplace();
  }

  void take(CConsoleReader& reader) {
    if (!table_) {
      printComplete(reader, options_.json, filter_);
      return;
    }
    EntryPairs pairs;
    const auto add = [&](std::string_view name, std::string_view value) {
      filter_.see(name, value);
      pairs.emplace_back(name, value);
    };
    for (filter_.begin(); reader.VisitNextEntry(add) && reader.WasEntryComplete(); filter_.begin()) {
      if (filter_.holds()) table_->add(pairs);
      pairs.clear();
    }
    reader.Resume();
    table_->draw();
  }

 private:
  const Options& options_;
  EntryFilter& filter_;
  std::optional<LiveTable> table_;
};

// Until the program is stopped. A log that has become shorter, or is another file than before, has begun
// anew.
void follow(const Options& options, EntryFilter& filter) {
  if (options.file == "-") throw tovin::Exception(L"Standard input cannot be followed");
  const std::wstring name = tovin::platform::fileName(options.file);
  auto reader = open(name.c_str(), options.position);
  Follower follower(options, filter);
  tovin::platform::FileIdentity before = tovin::platform::identityOf(name.c_str());
  for (int64_t seen = -1; std::cout; std::this_thread::sleep_for(pause)) {
    const tovin::platform::FileIdentity now = tovin::platform::identityOf(name.c_str());
    const int64_t length = lengthOf(name.c_str());
    const bool isAnother = now != before && now != tovin::platform::FileIdentity();
    if (length == seen && !isAnother) continue;
    if (reader && (length < seen || isAnother)) {
      messages::warn(options.file + (isAnother ? " is another file now" : " has become shorter") +
                     ": it is read from the beginning");
      reader.reset();
    }
    if (isAnother) before = now;
    seen = length;
    if (!reader && length > 0) reader = open(name.c_str(), 0);
    if (reader) follower.take(*reader);
  }
}

void writePage(const Options& options, EntryFilter& filter) {
  const InputFile file(options.file);
  LogPage page(options.file == "-" ? "Standard input" : options.file);
  forEntries(file, options, filter, all, [&page](const EntryPairs& entry) { page.add(entry); });
  outputFile::place(options.html, page.text());
}

int64_t timeOf(const char* option, const std::string& text) {
  const std::optional<int64_t> time = entryTime::parse(text);
  if (!time) throw CLI::ValidationError(option, "takes a time as 2026-11-26T14:03:00Z, not \"" + text + '"');
  return *time;
}

EntryFilter filterOf(const Options& options) {
  EntryFilter filter;
  for (const std::string& condition : options.where) filter.add(arguments::fromList(condition));
  if (!options.since.empty()) filter.since(timeOf("--since", options.since));
  if (!options.until.empty()) filter.until(timeOf("--until", options.until));
  return filter;
}

void run(const Options& options) {
  if (!options.columns.empty() && !options.isTable())
    throw CLI::RequiresError("--columns", "--csv, --tsv or --table");
  EntryFilter filter = filterOf(options);
  outputFile::requireAnother("--html", options.html, {options.file});
  if (options.follow)
    follow(options, filter);
  else if (!options.html.empty())
    writePage(options, filter);
  else if (!options.countBy.empty())
    showCounts(options, filter);
  else
    options.isTable() ? showTable(options, filter) : show(options, filter);
  if (filter.asksForTimes() && !filter.sawTime()) messages::warn("no entry says a time");
}

void addTableOptions(CLI::App& log, Options& options, CLI::Option& json, CLI::Option& follow) {
  CLI::Option* csv = log.add_flag("--csv", options.csv, "A table with commas between the values");
  CLI::Option* tsv = log.add_flag("--tsv", options.tsv, "A table with tabs between the values");
  CLI::Option* table = log.add_flag("--table", options.table, "A table for the eye");
  csv->excludes(tsv);
  table->excludes(csv)->excludes(tsv);
  for (CLI::Option* form : {csv, tsv, table}) form->excludes(&json)->excludes(&follow);
  CLI::Option* columns =
      arguments::requireText(log.add_option("--columns", options.columns,
                                            "Names of the columns, with commas between; else all there are"))
          ->type_name("LIST");
  arguments::requireText(
      log.add_option("--count-by", options.countBy, "How many entries have each value of this name"))
      ->type_name("NAME")
      ->excludes(columns)
      ->excludes(&follow);
}

void addFilterOptions(CLI::App& log, Options& options) {
  arguments::requireText(log.add_option("--where", options.where,
                                        "Only entries with this value, or with one that the expression "
                                        "matches; all conditions must hold"))
      ->type_name("NAME=VALUE|NAME~REGEX")
      ->allow_extra_args(false);
  arguments::requireText(log.add_option("--since", options.since, "Only entries of this time or later"))
      ->type_name("T");
  arguments::requireText(log.add_option("--until", options.until, "Only entries of this time or before"))
      ->type_name("T");
}

}  // namespace

void commands::addLog(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* log = app.add_subcommand("log", "Show the entries of a job's console log");
  arguments::addFile(*log, "FILE", options->file, "The log; - for standard input")->required();
  arguments::addNumber(*log, "--position", options->position, "Begin at this byte")->capture_default_str();
  CLI::Option* json =
      log->add_flag("--json", options->json, "One JSON object an entry, each on its own line");
  CLI::Option* follow =
      log->add_flag("--follow", options->follow, "Go on with what is still written; only complete entries");
  addTableOptions(*log, *options, *json, *follow);
  addFilterOptions(*log, *options);
  CLI::Option* html =
      arguments::addFile(*log, "--html", options->html,
                         "Write a page with the entries to this file; - for standard output", "OUT");
  for (const char* other : {"--json", "--csv", "--tsv", "--table", "--follow", "--columns", "--count-by"})
    html->excludes(log->get_option(other));
  log->footer("Example: ztclient log job.log --json --follow");
  log->callback([options, &status] {
    run(*options);
    status = done;
  });
}
