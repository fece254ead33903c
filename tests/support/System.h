#pragma once

#include <string>
#include <vector>

#include "tovinCore/platform/Paths.h"

/// What the tests ask of the operating system.
namespace testsupport {

using tovin::platform::pathOf;

/// The strangest file name that the system takes, and how the header of a form's part has it.
struct StrangeName {
  const char* plain;
  const char* inHeader;
};
extern const StrangeName strangeName;

/// Null takes the variable away.
void setVariable(const char* name, const char* value);
/// The variable that says where the user's settings lie.
extern const char* const settingsVariable;
/// Where settings lie in a registry: between the two calls this process sees an empty one of its own.
void enterOwnRegistry();
void leaveOwnRegistry();
/// The most memory that the process ever had, in kilobytes.
long peakKilobytes();

/// Whether there is a shell, with the programs that the tests work with (a web server, openssl).
bool hasShell();
/// The challenges of the web server that are answered here, as it calls them.
std::vector<std::string> answeredChallenges();
/// The name by which these know a file.
std::string shellPath(const std::string& path);
/// Runs a command to its end; an exception when its status is not 0.
void runShell(const std::string& command);

/// A shell command that runs beside the test and dies with it.
class BackgroundCommand {
 public:
  /// \param folder for a file of its own.
  BackgroundCommand(const std::string& command, const std::string& folder);
  BackgroundCommand(const BackgroundCommand&) = delete;
  BackgroundCommand& operator=(const BackgroundCommand&) = delete;
  ~BackgroundCommand();
  bool isOver();

 private:
  std::string guard_;
  int process_ = -1;
};

}  // namespace testsupport
