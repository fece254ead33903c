#include "ztclient/terminal/ProgressBar.h"

#include <algorithm>
#include <iostream>
#include <string>

#include "tovinCore/Format.h"
#include "tovinCore/Utf8.h"
#include "ztclient/terminal/Terminal.h"

namespace {

constexpr auto interval = std::chrono::milliseconds(100);
constexpr double megabyte = 1e6;
constexpr size_t widestBar = 24;
constexpr size_t narrowestBar = 6;
constexpr const char* wipe = "\r\x1b[K";

std::string barOf(double share, size_t width) {
  const auto filled = static_cast<size_t>(share * static_cast<double>(width));
  return "[" + std::string(filled, '#') + std::string(width - filled, '.') + "]";
}

std::wstring timeOf(double seconds) {
  const auto whole = static_cast<long long>(seconds);
  return tovin::format(L"%d:%02d", whole / 60, whole % 60);
}

// The bar takes what the text leaves; where that is too little there is none, and then the text is cut. The
// last column stays free: a line that fills it would break.
std::string fitted(double share, const std::string& text) {
  const size_t room = terminal::width() - 1;
  const size_t beside = text.size() + 2;
  if (share < 0 || beside + narrowestBar > room) return text.substr(text.starts_with(' '), room);
  return barOf(share, std::min(widestBar, room - beside)) + text;
}

}  // namespace

ProgressBar::ProgressBar() : visible_(terminal::showsProgress()), start_(Clock::now()), last_(start_) {}

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
  const bool known = done > 0 && done <= length;
  if (known) text += L", " + timeOf((total - bytes) * seconds / bytes) + L" left";
  std::cerr << wipe << fitted(known ? bytes / total : -1, tovin::wideToUtf8(text)) << std::flush;
}
