#include "ztclient/terminal/Messages.h"

#include <iostream>

#include "tovinCore/platform/Paths.h"
#include "ztclient/input/GivenNames.h"
#include "ztclient/terminal/Escaping.h"
#include "ztclient/terminal/Terminal.h"

namespace {

std::string& command() {
  static std::string name;
  return name;
}

// Before a line goes to standard error, what was printed stands in its place.
void say(const std::string& head, const std::string& text) {
  std::cout.flush();
  std::cerr << head << ' ' << escaping::shown(text) << '\n' << std::flush;
}

std::string speaker() { return command().empty() ? "ztclient:" : "ztclient " + command() + ":"; }

// The text of a message: no line end behind it, and without the lines that only tell which call it passed.
std::wstring essence(std::wstring message) {
  constexpr std::wstring_view passed = L" exception caught";
  for (size_t end; !terminal::settings().verbose && message.ends_with(passed); message.erase(end)) {
    end = message.rfind(L'\n');
    if (end == message.npos) break;
  }
  while (message.ends_with(L'\n')) message.pop_back();
  if (message == L"std::bad_alloc") return L"There is not enough memory";  // as a guarded call hands it on
  return message;
}

}  // namespace

void messages::setCommand(const std::string& name) { command() = name; }

void messages::error(const std::string& text) { say(terminal::alarm(speaker()), text); }

void messages::warn(const std::string& text) {
  if (!terminal::settings().quiet) say(speaker(), text);
}

void messages::note(const std::string& text) {
  if (terminal::settings().verbose) say(speaker(), text);
}

std::string messages::textOf(const tovin::Exception& e) {
  std::wstring text = essence(e.getMessage());
  const std::wstring& file = e.getFile();
  if (e.getLine() > 0)
    text = tovin::format(L"%ls:%d:%d: ", file, e.getLine(), e.getColumn()) + text;
  else if (!file.empty() && !text.ends_with(L' ' + file))
    text = file + L": " + text;
  if (!e.getReason().empty()) text += L": " + e.getReason();
  if (!e.getOrigin().empty()) text += L" (" + e.getOrigin() + L")";
  std::string all = tovin::platform::fileNameBytes(givenNames::in(text));
  if (!terminal::settings().verbose) return all;
  for (const tovin::CatchEntry& entry : e.getTrail())
    all += std::string("\n  in ") + entry.className + "::" + entry.method;
  return all;
}
