#include <unistd.h>

#include <cstdio>

#include "tovinCore/platform/Console.h"

namespace tovin::platform {

void printErrorLine(const std::string& text) noexcept { std::fprintf(stderr, "%s\n", text.c_str()); }

bool isErrorTerminal() noexcept { return ::isatty(STDERR_FILENO) == 1; }
bool isOutputTerminal() noexcept { return ::isatty(STDOUT_FILENO) == 1; }

std::vector<std::string> programArguments(int argc, char** argv) {
  return argc > 0 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

// Nothing to do where streams know no text mode and terminals speak UTF-8.
Utf8Console::Utf8Console() noexcept { static_cast<void>(before_); }
Utf8Console::~Utf8Console() = default;

}  // namespace tovin::platform
