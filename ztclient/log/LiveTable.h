#pragma once

#include <chrono>
#include <cstddef>
#include <deque>

#include "ztclient/log/LogTable.h"

/// A log that is followed on a terminal: how many entries came and how fast, and the last of them as a table
/// that fits. It is drawn over itself, so that it stays when the program is stopped.
class LiveTable {
 public:
  void add(const EntryPairs& entry);
  void draw();

 private:
  static constexpr size_t mostKept = 200;

  std::deque<EntryPairs> last_;
  size_t count_ = 0;
  size_t drawnLines_ = 0;
  bool isDrawn_ = false;
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};
