#pragma once

#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The pairs of an entry: name and value.
using EntryPairs = std::vector<std::pair<std::string, std::string>>;
/// A row: a value a column, none where the entry has no such pair.
using TableRow = std::vector<std::optional<std::string>>;

/// Entries of a log as rows under columns: first all that shall be columns is seen, then each entry gives its
/// row.
///
/// - Shape: a column a name, in the order of first sight. A name that an entry has more than once has as many
///   columns.
/// - Errors: tovin::Exception for more than 1,000 columns, which would be mostly empty.
class LogColumns {
 public:
  LogColumns() = default;
  /// Those and no others.
  explicit LogColumns(const std::vector<std::string>& names);

  void see(const EntryPairs& entry);
  TableRow rowOf(const EntryPairs& entry);
  const std::vector<std::string>& names() const noexcept { return names_; }
  /// Names that no row had a value for.
  std::vector<std::string> unused() const;

 private:
  // Visits the pairs with their names folded and how often the entry had the name before.
  template <class Visit>
  static void forPairs(const EntryPairs& entry, Visit&& visit);

  std::vector<std::string> names_;
  std::map<std::pair<std::string, size_t>, size_t> places_;
  std::vector<bool> used_;
};

/// Tables as texts. Each has one line a row but for the line feeds that the form itself keeps.
namespace tableText {

/// RFC 4180: lines end with CR LF; a value in quotation marks where it needs them, or is there and empty.
void writeCsv(std::ostream& out, const TableRow& row);
/// A tab between the values; tab, line feed and backslash in them are `\t`, `\n` and `\\`.
void writeTsv(std::ostream& out, const TableRow& row);
TableRow headingOf(const std::vector<std::string>& names);

/// Columns side by side for the eye, which fit a width: those that are too wide are cut, with a "…".
class Aligned {
 public:
  /// Every row is seen before the first is written.
  void see(const TableRow& row);
  /// Narrows the widest columns until all fit. \return how many of the last ones are left out, since they do
  /// not.
  size_t fit(size_t width);
  void write(std::ostream& out, const TableRow& row) const;
  void writeRule(std::ostream& out) const;

 private:
  std::vector<size_t> widths_;
};

}  // namespace tableText
