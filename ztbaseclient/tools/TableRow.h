#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tovinCore/Units.h"
#include "ztbaseclient/tools/FileDifferences.h"

// A line as a row of a table, and how two of them compare.
namespace differences {

// A row owns its text; its fields are places in it.
struct Row {
  struct Place {
    size_t begin;
    size_t end;
  };
  int64_t number = 0;
  std::string text;
  std::vector<Place> fields;

  std::string_view field(size_t i) const { return between(fields[i].begin, fields[i].end); }
  // What stands before a field, or behind the last one.
  std::string_view gap(size_t i) const {
    return between(i == 0 ? 0 : fields[i - 1].end, i < fields.size() ? fields[i].begin : text.size());
  }
  size_t gapAt(size_t i) const { return i == 0 ? 0 : fields[i - 1].end; }

 private:
  std::string_view between(size_t begin, size_t end) const {
    return std::string_view(text).substr(begin, end - begin);
  }
};

// Finds the fields of a row.
void split(Row& row, char delimiter);

bool isNumber(std::string_view text);

// With A to Z folded.
inline char folded(char c) {
  return static_cast<char>(tovin::foldAscii(static_cast<uint32_t>(static_cast<unsigned char>(c))));
}

enum class Verdict { equal, within, different };

class RowComparison {
 public:
  RowComparison(const Options& options, std::vector<std::string> columns);

  // Whether the rows are equal or within tolerance; looks no further than it must.
  bool matches(const Row& a, const Row& b);
  // All differences; empty for equal rows. Borrowed until the next call.
  const std::vector<Field>& fieldsOf(const Row& a, const Row& b);
  // From 0, what is equal, to 1 for rows that have nothing in common; beyond for those that are not of a
  // kind.
  double distance(const Row& a, const Row& b);
  // The index of a column by name or number; raises what is neither.
  size_t columnOf(const std::string& name) const;

 private:
  bool sameText(std::string_view a, std::string_view b) const;
  bool sameLine(const Row& a, const Row& b) const;
  bool isIgnored(size_t column) const { return column < ignored_.size() && ignored_[column]; }
  Verdict judge(std::string_view a, std::string_view b, Field& field) const;
  bool isWithin(const Field& field, double measure, bool decimal) const;
  template <class Take>
  void eachDifference(const Row& a, const Row& b, Take&& take);
  void name(Field& field) const;

  const Options& options_;
  int tolerance_;
  std::vector<std::string> columns_;
  std::vector<bool> ignored_;
  std::vector<Field> found_;
};

}  // namespace differences
