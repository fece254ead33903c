#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "tovinCore/platform/Console.h"

namespace tovin::platform {

void printErrorLine(const std::string& text) noexcept { std::fprintf(stderr, "%s\n", text.c_str()); }

bool isErrorTerminal() noexcept { return ::isatty(STDERR_FILENO) == 1; }
bool isOutputTerminal() noexcept { return ::isatty(STDOUT_FILENO) == 1; }

namespace {

winsize terminalSize() noexcept {
  for (const int stream : {STDERR_FILENO, STDOUT_FILENO}) {
    winsize size;
    if (::ioctl(stream, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size;
  }
  return {};
}

}  // namespace

int terminalWidth() noexcept { return terminalSize().ws_col; }

int terminalHeight() noexcept { return terminalSize().ws_row; }

std::vector<std::string> programArguments(int argc, char** argv) {
  return argc > 0 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

// Streams know no text mode and terminals speak UTF-8. A descriptor that was closed would be given to the
// next file: it is filled with one that cannot be used in its direction.
Utf8Console::Utf8Console() noexcept {
  static_cast<void>(before_);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(stream, F_GETFD) >= 0) continue;
    static_cast<void>(::open("/dev/null", (stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) | O_CLOEXEC));
  }
  std::signal(SIGXFSZ, SIG_IGN);
}
Utf8Console::~Utf8Console() = default;

}  // namespace tovin::platform
