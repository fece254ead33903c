#include "ztbaseclient/tools/FileDifferences.h"

#include <algorithm>
#include <deque>
#include <unordered_map>
#include <utility>

#include "tovinCore/Guard.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/tools/RowAlignment.h"
#include "ztbaseclient/tools/TableRow.h"
#include "ztcore/ztStringReader.h"

namespace differences {
namespace {

// Rows that are aligned at once: few at first, then more until the files agree again.
constexpr size_t fewestRows = 64, mostRows = 4096, growth = 8;
constexpr size_t mostBytes = size_t{1} << 24;
// So many rows in turn that match show that the files agree again.
constexpr size_t settling = 3;

// The rows of a file, some of them read ahead.
class Source {
 public:
  Source(const wchar_t* file, const Options& options)
      : reader_(file), delimiter_(options.delimiter), passesBlank_(options.ignoreBlankLines) {}

  // Reads ahead, within bounds. \return whether so many rows are there.
  bool have(size_t count) {
    if (begin_ >= mostRows) {
      rows_.erase(rows_.begin(), rows_.begin() + static_cast<std::ptrdiff_t>(begin_));
      begin_ = 0;
    }
    while (!ended_ && rows().size() < count && (bytes_ < mostBytes || rows().empty())) readRow();
    return rows().size() >= count;
  }
  std::span<const Row> rows() const { return std::span(rows_).subspan(begin_); }
  const Row& front() const { return rows_[begin_]; }
  bool isEmpty() const { return begin_ == rows_.size(); }
  bool hasEnded() const { return ended_; }
  void drop(size_t count) {
    for (; count > 0; --count) bytes_ -= rows_[begin_++].text.size();
  }

  void skip(int64_t lines) { number_ += lines; }
  ztStringReader& reader() { return reader_; }

 private:
  void readRow() {
    Row row;
    if (!takePlain(row.text) && !takeAny(row.text)) {
      ended_ = true;
      return;
    }
    row.number = ++number_;
    split(row, delimiter_);
    if (passesBlank_ && row.text.find_first_not_of(" \t\r") == std::string::npos) return;
    bytes_ += row.text.size();
    rows_.push_back(std::move(row));
  }

  bool takePlain(std::string& text) {
    const std::string_view plain = reader_.PeekPlainLines();
    if (plain.empty()) return false;
    text = plain.substr(0, plain.find('\n'));
    reader_.PassPlainLines(text.size() + 1);
    return true;
  }
  // The line up to a zero character, which ends it.
  bool takeAny(std::string& text) {
    if (!reader_.GetLine(line_)) return false;
    const std::wstring_view whole = line_.view();
    tovin::appendUtf8(text, whole.substr(0, std::min(whole.find(L'\0'), whole.size() - 1)));
    return true;
  }

  ztStringReader reader_;
  char delimiter_;
  bool passesBlank_;
  bool ended_ = false;
  int64_t number_ = 0;
  size_t bytes_ = 0, begin_ = 0;
  std::vector<Row> rows_;
  tovin::WideString line_;
};

bool isAsked(const Options& options, const std::string& name) {
  return options.key == name || std::ranges::count(options.ignoredColumns, name) > 0;
}

// The columns' names, if the first row is a heading: words over as many fields with a number among them, or
// names that were asked for.
std::vector<std::string> headingOf(const wchar_t* file, const Options& options) {
  Source source(file, options);
  source.have(2);
  std::vector<std::string> names;
  if (source.isEmpty()) return names;
  const Row& first = source.front();
  bool words = !first.fields.empty(), asked = false;
  for (size_t i = 0; i < first.fields.size(); ++i) {
    std::string_view name = first.field(i);
    if (name.size() > 1 && name.front() == '"' && name.back() == '"') name = name.substr(1, name.size() - 2);
    words = words && !isNumber(name);
    asked = isAsked(options, names.emplace_back(name)) || asked;
  }
  if (asked) return names;
  bool numbers = false;
  if (source.rows().size() > 1) {
    const Row& second = source.rows()[1];
    words = words && second.fields.size() == names.size();
    for (size_t i = 0; i < second.fields.size(); ++i) numbers = numbers || isNumber(second.field(i));
  }
  if (!words || !numbers) names.clear();
  return names;
}

class Finder {
 public:
  Finder(const wchar_t* file1, const wchar_t* file2, const Options& options, const Visitor& visit,
         const std::function<void(int64_t)>& watch)
      : options_(options),
        visit_(visit),
        watch_(watch),
        comparison_(options, headingOf(file1, options)),
        first_(file1, options),
        second_(file2, options) {}

  Summary run() {
    options_.key.empty() ? compareInOrder() : compareByKey();
    return summary_;
  }

 private:
  // Rows are taken as they come until two are different: so far the files' verdict is not decided.
  void compareInOrder() {
    for (;;) {
      if (first_.isEmpty() && second_.isEmpty()) skipEqualLines();
      const bool more1 = first_.have(1), more2 = second_.have(1);
      if (!more1 || !more2) break;
      if (comparison_.matches(first_.front(), second_.front()) || isFollowedByMatches()) {
        takePair(first_.front(), second_.front());
        first_.drop(1);
        second_.drop(1);
      } else {
        alignRows();
      }
    }
    for (; first_.have(1); first_.drop(1)) takeRemoved(first_.front());
    for (; second_.have(1); second_.drop(1)) takeAdded(second_.front());
  }

  void skipEqualLines() {
    if (watch_) watch_(first_.reader().GetPosition());
    if (options_.context > 0) return;
    const int64_t count = ztStringReader::SkipEqualLines(first_.reader(), second_.reader(), watch_);
    first_.skip(count);
    second_.skip(count);
  }

  // Most often one row was changed and nothing else.
  bool isFollowedByMatches() {
    first_.have(1 + settling);
    second_.have(1 + settling);
    const auto rows1 = first_.rows(), rows2 = second_.rows();
    if (rows1.size() < 1 + settling || rows2.size() < 1 + settling) return false;
    for (size_t i = 1; i <= settling; ++i) {
      if (!comparison_.matches(rows1[i], rows2[i])) return false;
    }
    return rows1[0].fields.size() == rows2[0].fields.size();
  }

  void alignRows() {
    for (size_t size = fewestRows;; size *= growth) {
      first_.have(size);
      second_.have(size);
      const bool whole = first_.hasEnded() && second_.hasEnded() && first_.rows().size() <= size &&
                         second_.rows().size() <= size;
      const auto rows1 = first_.rows().first(std::min(size, first_.rows().size()));
      const auto rows2 = second_.rows().first(std::min(size, second_.rows().size()));
      const Alignment alignment = align(rows1, rows2, comparison_);
      const bool last = size >= mostRows;
      size_t end = alignment.pairs.size();
      if (!whole) end = last ? behindLastPair(alignment) : behindSettled(alignment, rows1, rows2);
      if (end == 0) continue;
      summary_.alignedByBlocks = summary_.alignedByBlocks || alignment.byBlocks;
      return take(alignment, end, rows1, rows2);
    }
  }

  // Rows at the end of a stretch may belong to what is not read yet.
  static size_t behindLastPair(const Alignment& alignment) {
    for (size_t end = alignment.pairs.size(); end > 0; --end) {
      const RowPair& pair = alignment.pairs[end - 1];
      if (pair.first != RowPair::none && pair.second != RowPair::none) return end;
    }
    return alignment.pairs.size();
  }

  size_t behindSettled(const Alignment& alignment, std::span<const Row> rows1, std::span<const Row> rows2) {
    size_t run = 0;
    for (size_t end = alignment.pairs.size(); end > 0; --end) {
      const RowPair& pair = alignment.pairs[end - 1];
      const bool match = pair.first != RowPair::none && pair.second != RowPair::none &&
                         comparison_.matches(rows1[pair.first], rows2[pair.second]);
      run = match ? run + 1 : 0;
      if (run == settling) return end - 1 + settling;
    }
    return 0;
  }

  void take(const Alignment& alignment, size_t end, std::span<const Row> rows1, std::span<const Row> rows2) {
    size_t done1 = 0, done2 = 0;
    for (const RowPair& pair : std::span(alignment.pairs).first(end)) {
      if (pair.first != RowPair::none) ++done1;
      if (pair.second != RowPair::none) ++done2;
      if (pair.second == RowPair::none)
        takeRemoved(rows1[pair.first]);
      else if (pair.first == RowPair::none)
        takeAdded(rows2[pair.second]);
      else
        takePair(rows1[pair.first], rows2[pair.second]);
    }
    first_.drop(done1);
    second_.drop(done2);
  }

  void compareByKey() {
    const size_t column = comparison_.columnOf(options_.key);
    const auto keyOf = [&](const Row& row) {
      std::string key(column < row.fields.size() ? row.field(column) : "");
      if (options_.ignoreCase) std::ranges::transform(key, key.begin(), folded);
      return key;
    };
    std::vector<Row> all;
    for (; second_.have(1); second_.drop(1)) all.push_back(second_.front());
    std::unordered_map<std::string, std::deque<size_t>> places;
    for (size_t i = 0; i < all.size(); ++i) places[keyOf(all[i])].push_back(i);
    std::vector<bool> used(all.size());
    for (; first_.have(1); first_.drop(1)) {
      if (watch_) watch_(first_.reader().GetPosition());
      const auto place = places.find(keyOf(first_.front()));
      if (place == places.end() || place->second.empty()) {
        takeRemoved(first_.front());
        continue;
      }
      used[place->second.front()] = true;
      takePair(first_.front(), all[place->second.front()]);
      place->second.pop_front();
    }
    for (size_t i = 0; i < all.size(); ++i) {
      if (!used[i]) takeAdded(all[i]);
    }
  }

  void takePair(const Row& a, const Row& b) {
    const std::vector<Field>& fields = comparison_.fieldsOf(a, b);
    if (fields.empty()) return takeEqual(a, b);
    for (const Field& field : fields) count(field);
    give({Line::Kind::Changed, a.number, b.number, a.text, b.text, fields});
  }
  void takeRemoved(const Row& row) {
    ++summary_.removed;
    give({Line::Kind::Removed, row.number, 0, row.text, {}, {}});
  }
  void takeAdded(const Row& row) {
    ++summary_.added;
    give({Line::Kind::Added, 0, row.number, {}, row.text, {}});
  }

  void count(const Field& field) {
    ++(field.within ? summary_.within : summary_.different);
    if (field.kind != Field::Kind::Number) return;
    // What is no number at all is the largest.
    if (!(field.absolute <= summary_.largestAbsolute)) summary_.largestAbsolute = field.absolute;
    if (!(field.relative <= summary_.largestRelative)) summary_.largestRelative = field.relative;
  }

  // Equal lines are given behind a difference, or kept for the next one.
  void takeEqual(const Row& a, const Row& b) {
    if (options_.context <= 0) return;
    if (toFollow_ > 0) {
      --toFollow_;
      visit_({Line::Kind::Equal, a.number, b.number, a.text, b.text, {}});
      return;
    }
    before_.push_back({a.number, b.number, a.text, b.text});
    if (before_.size() > static_cast<size_t>(options_.context)) before_.pop_front();
  }

  void give(const Line& line) {
    for (const Kept& each : before_)
      visit_({Line::Kind::Equal, each.line1, each.line2, each.text1, each.text2, {}});
    before_.clear();
    toFollow_ = options_.context;
    visit_(line);
  }

  struct Kept {
    int64_t line1, line2;
    std::string text1, text2;
  };

  const Options& options_;
  const Visitor& visit_;
  const std::function<void(int64_t)>& watch_;
  RowComparison comparison_;
  Source first_, second_;
  Summary summary_;
  std::deque<Kept> before_;
  int toFollow_ = 0;
};

}  // namespace

Summary find(const wchar_t* file1, const wchar_t* file2, const Options& options, const Visitor& visit,
             const std::function<void(int64_t)>& watch) {
  return tovin::guarded({"differences", "find"},
                        [&] { return Finder(file1, file2, options, visit, watch).run(); });
}

}  // namespace differences
