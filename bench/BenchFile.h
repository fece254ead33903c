#pragma once

#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>

#include "tovinCore/Utf8.h"

// A file with bytes for a benchmark, gone afterwards.
class BenchFile {
 public:
  explicit BenchFile(const std::string& bytes) {
    static std::atomic<int> count{0};
    path_ = std::filesystem::temp_directory_path() / ("ztb_bench_" + std::to_string(count++));
    std::ofstream(path_, std::ios::binary) << bytes;
  }
  BenchFile(const BenchFile&) = delete;
  BenchFile& operator=(const BenchFile&) = delete;
  ~BenchFile() { std::filesystem::remove(path_); }

  std::wstring name() const { return tovin::utf8ToWide(path_.string()); }

 private:
  std::filesystem::path path_;
};
