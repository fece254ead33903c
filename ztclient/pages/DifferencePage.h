#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ztbaseclient/tools/FileDifferences.h"
#include "ztclient/answers/ColumnSums.h"
#include "ztclient/comparison/PairComparison.h"

/// The differences of two files as a page: sums, pictures of them over the lines and by column, and the first
/// thousand lines side by side.
class DifferencePage {
 public:
  /// \param back an address of a page that leads here; empty for none.
  DifferencePage(std::string name1, std::string name2, std::string tolerance, std::string back = {});

  void add(const differences::Line& line);
  std::string text(const differences::Summary& sums) const;

 private:
  struct Point {
    int64_t line;
    double relative;
  };

  void addPoint(int64_t line, double relative);
  std::string plotOverLines() const;
  std::string plotByColumn() const;

  std::string name1_, name2_, tolerance_, back_;
  ColumnSums columns_;
  std::string rows_;
  int64_t shown_ = 0;
  int64_t more_ = 0;
  // The largest relative difference of so many lines each.
  std::vector<Point> points_;
  int64_t linesAPoint_ = 1;
};

/// How the files of two folders compare, as a page that leads to a page for each pair.
class FolderPage {
 public:
  FolderPage(std::string folder1, std::string folder2)
      : folder1_(std::move(folder1)), folder2_(std::move(folder2)) {}

  /// \param page the address of the pair's page; empty for none.
  void add(const std::string& path, const PairResult& result, const std::string& page);
  std::string text(const std::string& sums) const;

 private:
  std::string folder1_, folder2_, rows_;
};
