#include "ztclient/terminal/Terminal.h"

#include <algorithm>
#include <charconv>

#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Console.h"
#include "tovinCore/platform/Environment.h"
#include "ztclient/terminal/Output.h"

namespace platform = tovin::platform;

namespace {

constexpr const char* bold = "\x1b[1m";
constexpr const char* boldRed = "\x1b[1;31m";
constexpr const char* red = "\x1b[31m";
constexpr const char* green = "\x1b[32m";
constexpr const char* plain = "\x1b[0m";
constexpr size_t usualWidth = 80;
constexpr size_t narrowest = 20;
constexpr size_t widestText = 100;

bool paints(bool isTerminal) {
  using terminal::Colours;
  const Colours colours = terminal::settings().colours;
  if (colours != Colours::automatic) return colours == Colours::always;
  return isTerminal && !terminal::isDumb() && platform::environmentVariable("NO_COLOR").empty();
}

std::ostream& paint(std::ostream& out, const char* sequence, std::string_view text) {
  const bool painted = paints(platform::isOutputTerminal());
  if (painted) Output::paint(out, sequence);
  out << text;
  if (painted) Output::paint(out, plain);
  return out;
}

// 0 for none.
size_t columnsSaid() {
  const std::string text = tovin::wideToUtf8(platform::environmentVariable("COLUMNS"));
  size_t columns = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), columns);
  return error == std::errc() && end == text.data() + text.size() ? columns : 0;
}

size_t firstOf(size_t first, size_t second) {
  const size_t columns = first > 0 ? first : second;
  return columns > 0 ? std::max(columns, narrowest) : usualWidth;
}

}  // namespace

terminal::Settings& terminal::settings() noexcept {
  static Settings settings;
  return settings;
}

std::ostream& terminal::operator<<(std::ostream& out, const Heading& heading) {
  return paint(out, bold, heading.text);
}

std::ostream& terminal::operator<<(std::ostream& out, const Coloured& part) {
  return paint(out, part.colour == Colour::red ? red : green, part.text);
}

std::string terminal::alarm(const std::string& text) {
  return paints(platform::isErrorTerminal()) ? boldRed + text + plain : text;
}

bool terminal::showsProgress() {
  return platform::isErrorTerminal() && !settings().quiet && !terminal::isDumb();
}

bool terminal::isDumb() { return platform::environmentVariable("TERM") == L"dumb"; }

size_t terminal::width() { return firstOf(static_cast<size_t>(platform::terminalWidth()), columnsSaid()); }

size_t terminal::textWidth() {
  return std::min(firstOf(columnsSaid(), static_cast<size_t>(platform::terminalWidth())), widestText);
}
