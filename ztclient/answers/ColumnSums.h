#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>

#include "ztbaseclient/tools/FileDifferences.h"
#include "ztclient/answers/DifferenceText.h"

/// What differs in each column of two files, as their lines come.
class ColumnSums {
 public:
  struct Column {
    std::string name;
    int64_t within = 0;
    int64_t different = 0;
    double largestAbsolute = 0;
    double largestRelative = 0;
  };

  void add(const differences::Line& line) {
    for (const differences::Field& field : line.fields) {
      Column& column = columns_[differenceText::columnOf(field)];
      column.name = differenceText::nameOf(field);
      ++(field.within ? column.within : column.different);
      // NaN counts as the largest.
      if (!(field.absolute <= column.largestAbsolute)) column.largestAbsolute = field.absolute;
      if (!(field.relative <= column.largestRelative)) column.largestRelative = field.relative;
    }
  }

  /// By their numbers.
  const std::map<int64_t, Column>& columns() const noexcept { return columns_; }

 private:
  std::map<int64_t, Column> columns_;
};
