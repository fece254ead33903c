#include "ztclient/terminal/ProgressBar.h"

#include <algorithm>
#include <iostream>
#include <string>

#include "tovinCore/Format.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Console.h"

namespace {

constexpr auto interval = std::chrono::milliseconds(100);
constexpr double megabyte = 1e6;
constexpr size_t width = 24;
constexpr const char* wipe = "\r\x1b[K";

std::string barOf(double share) {
  const auto filled = static_cast<size_t>(share * width);
  return "[" + std::string(filled, '#') + std::string(width - filled, '.') + "]";
}

std::wstring timeOf(double seconds) {
  const auto whole = static_cast<long long>(seconds);
  return tovin::format(L"%d:%02d", whole / 60, whole % 60);
}

}  // namespace

ProgressBar::ProgressBar()
    : visible_(tovin::platform::isErrorTerminal()), start_(Clock::now()), last_(start_) {}

ProgressBar::~ProgressBar() {
  if (shown_) std::cerr << wipe << std::flush;
}

void ProgressBar::show(uint64_t done, uint64_t length) {
  if (!visible_) return;
  const auto now = Clock::now();
  if (now - last_ < interval) return;
  last_ = now;
  shown_ = true;
  const double seconds = std::max(std::chrono::duration<double>(now - start_).count(), 1e-3);
  const double bytes = static_cast<double>(done);
  const double total = static_cast<double>(length);
  std::wstring text = tovin::format(L" %.1f MB, %.1f MB/s", bytes / megabyte, bytes / megabyte / seconds);
  std::string bar;
  if (done > 0 && done <= length) {
    bar = barOf(bytes / total);
    text += L", " + timeOf((total - bytes) * seconds / bytes) + L" left";
  }
  std::cerr << wipe << bar << tovin::wideToUtf8(text) << std::flush;
}
