#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "ztclient/log/LogTable.h"

/// The entries of a log as a page: a table that can be filtered, and a bar of when they came.
///
/// - Limits: the last five thousand entries.
class LogPage {
 public:
  explicit LogPage(std::string name) : name_(std::move(name)) {}

  void add(const EntryPairs& entry);
  std::string text();

 private:
  std::string bars() const;

  std::string name_;
  std::deque<EntryPairs> entries_;
  std::vector<int64_t> times_;
  size_t count_ = 0;
};
