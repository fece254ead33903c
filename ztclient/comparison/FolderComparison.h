#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ztclient/comparison/FolderListing.h"
#include "ztclient/comparison/PairComparison.h"

/// Two folders compared, file by file.
///
///     const FolderComparison folders("run1", "run2", {});
///     folders.run(PairComparison({}, false), 4, [](const std::string& path, const PairResult& result) { …
///     });
///
/// - Shape: a pair is what has the same path in both. A folder is one only where it is empty and the other
///   side has none. Below a folder that cannot be read on one side nothing is told but that.
/// - Errors: as listFolder(); a file that cannot be read is a result.
class FolderComparison {
 public:
  using Visitor = std::function<void(const std::string& path, const PairResult& result)>;

  FolderComparison(std::string folder1, std::string folder2, const FileFilter& filter);

  size_t size() const noexcept { return pairs_.size(); }
  /// Compares with so many threads; `visit` is called from this one, in the order of the paths.
  void run(const PairComparison& comparison, unsigned jobs, const Visitor& visit) const;

  /// A path's file as the library opens it.
  std::wstring file1(const std::string& path) const;
  std::wstring file2(const std::string& path) const;

 private:
  struct Pair {
    std::string path;
    // Whether both are files, which are still to be compared; else `result` holds.
    bool isOpen = false;
    PairResult result = {};
  };

  void pairUp(const std::vector<FolderEntry>& first, const std::vector<FolderEntry>& second);
  void addSingle(const FolderEntry& entry, const std::vector<FolderEntry>& others,
                 PairResult::Verdict verdict);
  void addBoth(const FolderEntry& entry1, const FolderEntry& entry2);
  PairResult resultOf(size_t index, const PairComparison& comparison) const;

  std::string folder1_, folder2_;
  std::vector<Pair> pairs_;
};
