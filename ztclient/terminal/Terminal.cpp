#include "ztclient/terminal/Terminal.h"

#include "tovinCore/platform/Console.h"
#include "tovinCore/platform/Environment.h"

namespace {

constexpr const char* bold = "\x1b[1m";
constexpr const char* boldRed = "\x1b[1;31m";
constexpr const char* plain = "\x1b[0m";

std::string painted(const std::string& text, const char* colour, bool terminal) {
  if (!terminal || !tovin::platform::environmentVariable("NO_COLOR").empty()) return text;
  return colour + text + plain;
}

}  // namespace

std::string terminal::heading(const std::string& text) {
  return painted(text, bold, tovin::platform::isOutputTerminal());
}

std::string terminal::alarm(const std::string& text) {
  return painted(text, boldRed, tovin::platform::isErrorTerminal());
}
