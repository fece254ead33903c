#pragma once

#include <cstdint>

#include "ztbaseclient/tools/FileDifferences.h"
#include "ztclient/answers/ColumnSums.h"

/// Prints all differences of two files on standard output, as they are found.
class DifferencePrinter {
 public:
  enum class Form {
    /// Lines with what differs in them.
    list,
    /// Counts, the largest ones, by column, the first ten lines.
    summary,
    /// One object a difference, then one with the sums.
    json,
    /// That one alone.
    jsonSummary
  };

  explicit DifferencePrinter(Form form) : form_(form) {}

  void print(const differences::Line& line);
  void finish(const differences::Summary& summary);

 private:
  void list(const differences::Line& line);
  void gather(const differences::Line& line);
  void printSums(const differences::Summary& summary) const;

  Form form_;
  int64_t lastLine1_ = 0;
  int64_t gathered_ = 0;
  ColumnSums columns_;
};
