#pragma once

#include <string>
#include <vector>

#include "tovinCore/Export.h"

/// The standard streams and the command line of a program.
namespace tovin::platform {

/// Writes UTF-8 text and a line end to standard error, in one piece; failures are ignored.
TOVINCORE_API void printErrorLine(const std::string& text) noexcept;

/// Whether standard error is a terminal, where people watch.
TOVINCORE_API bool isErrorTerminal() noexcept;
/// The same of standard output.
TOVINCORE_API bool isOutputTerminal() noexcept;

/// How many columns the terminal of standard error or output has; 0 where neither tells.
TOVINCORE_API int terminalWidth() noexcept;
/// The same of rows.
TOVINCORE_API int terminalHeight() noexcept;

/// What follows the program's name on its command line, as UTF-8 whatever the system's own encoding is; a
/// name of a file that is no UTF-8 comes as its bytes.
TOVINCORE_API std::vector<std::string> programArguments(int argc, char** argv);

/// While one lives, the standard streams pass bytes as they are and a console shows them as UTF-8. A standard
/// stream that the caller had closed fails when it is used, and no file that is opened later is taken for it;
/// writing beyond a limit of the file's size is a failure like any other.
class TOVINCORE_API Utf8Console {
 public:
  Utf8Console() noexcept;
  Utf8Console(const Utf8Console&) = delete;
  Utf8Console& operator=(const Utf8Console&) = delete;
  ~Utf8Console();

 private:
  unsigned before_ = 0;
};

}  // namespace tovin::platform
