#include <fcntl.h>
#include <io.h>
#include <windows.h>
// After windows.h, which it needs.
#include <shellapi.h>

#include <cstdio>
#include <memory>

#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Console.h"

namespace tovin::platform {
namespace {

HANDLE errorStream() { return ::GetStdHandle(STD_ERROR_HANDLE); }

bool isConsole(HANDLE stream) {
  DWORD mode;
  return ::GetConsoleMode(stream, &mode) != 0;
}

}  // namespace

// A console takes UTF-16, whatever its code page is; a file or a pipe gets the bytes.
void printErrorLine(const std::string& text) noexcept try {
  DWORD written;
  if (isConsole(errorStream())) {
    const std::wstring line = utf8ToWide(text) + L"\n";
    ::WriteConsoleW(errorStream(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
  } else {
    const std::string line = text + "\n";
    ::WriteFile(errorStream(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
  }
} catch (...) {
  // No memory for the line: it is lost like one that cannot be written.
}

bool isErrorTerminal() noexcept { return isConsole(errorStream()); }
bool isOutputTerminal() noexcept { return isConsole(::GetStdHandle(STD_OUTPUT_HANDLE)); }

namespace {

SMALL_RECT terminalWindow() noexcept {
  for (const DWORD stream : {STD_ERROR_HANDLE, STD_OUTPUT_HANDLE}) {
    CONSOLE_SCREEN_BUFFER_INFO facts;
    if (::GetConsoleScreenBufferInfo(::GetStdHandle(stream), &facts)) return facts.srWindow;
  }
  return {0, 0, -1, -1};
}

}  // namespace

int terminalWidth() noexcept { return terminalWindow().Right - terminalWindow().Left + 1; }

int terminalHeight() noexcept { return terminalWindow().Bottom - terminalWindow().Top + 1; }

std::vector<std::string> programArguments(int, char**) {
  int count = 0;
  const std::unique_ptr<LPWSTR, decltype(&::LocalFree)> list(
      ::CommandLineToArgvW(::GetCommandLineW(), &count), ::LocalFree);
  std::vector<std::string> arguments;
  for (int i = 1; list && i < count; ++i) arguments.push_back(wideToUtf8(list.get()[i]));
  return arguments;
}

Utf8Console::Utf8Console() noexcept : before_(::GetConsoleOutputCP()) {
  for (std::FILE* stream : {stdin, stdout, stderr}) ::_setmode(::_fileno(stream), _O_BINARY);
  if (before_ != 0) ::SetConsoleOutputCP(CP_UTF8);
}

Utf8Console::~Utf8Console() {
  if (before_ != 0) ::SetConsoleOutputCP(before_);
}

}  // namespace tovin::platform
