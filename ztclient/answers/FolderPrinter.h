#pragma once

#include <array>
#include <string>

#include "ztclient/comparison/PairComparison.h"

/// Prints how the files of two folders compare on standard output, a line each and a sum; as JSON an object
/// each. Why something is unreadable is said on standard error too.
class FolderPrinter {
 public:
  FolderPrinter(std::string folder1, std::string folder2, bool json)
      : folder1_(std::move(folder1)), folder2_(std::move(folder2)), json_(json) {}

  void print(const std::string& path, const PairResult& result);
  /// "3 files: 2 equal, …".
  std::string sums() const;
  void finish() const;
  /// Whether anything came to this.
  bool any(PairResult::Verdict verdict) const { return countOf(verdict) > 0; }

 private:
  size_t countOf(PairResult::Verdict verdict) const { return counts_[static_cast<size_t>(verdict)]; }
  std::string wordFor(PairResult::Verdict verdict) const;

  std::string folder1_, folder2_;
  bool json_;
  std::array<size_t, 6> counts_ = {};
};
