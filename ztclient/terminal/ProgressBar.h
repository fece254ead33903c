#pragma once

#include <chrono>
#include <cstdint>

/// One line on standard error that follows a long task: share done, bytes, rate, time left. Silent for
/// short tasks, with --quiet, and where standard error is no terminal that can write a line anew. It fits the
/// terminal, and goes when the bar dies.
class ProgressBar {
 public:
  ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar();

  /// \param length 0 when nobody knows it.
  void show(uint64_t done, uint64_t length);

 private:
  using Clock = std::chrono::steady_clock;

  bool visible_;
  Clock::time_point start_;
  Clock::time_point last_;
  bool shown_ = false;
};
