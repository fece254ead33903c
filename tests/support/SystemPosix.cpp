#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

#include "tests/support/System.h"

namespace testsupport {

const StrangeName strangeName = {"a \"b\"\n\xC3\xA9", "a %22b%22%0A\xC3\xA9"};

void setVariable(const char* name, const char* value) {
  if (value)
    ::setenv(name, value, 1);
  else
    ::unsetenv(name);
}

const char* const settingsVariable = "XDG_CONFIG_HOME";
void enterOwnRegistry() {}
void leaveOwnRegistry() {}

long peakKilobytes() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

bool hasShell() { return true; }

std::vector<std::string> answeredChallenges() { return {"basic", "digest"}; }

std::string shellPath(const std::string& path) { return path; }

void runShell(const std::string& command) {
  if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
}

BackgroundCommand::BackgroundCommand(const std::string& command, const std::string&) {
  const std::string line = "exec " + command;
  const pid_t parent = ::getpid();
  process_ = ::fork();
  if (process_ < 0) throw std::runtime_error("no process");
  if (process_ > 0) return;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != parent) ::_exit(1);
  ::execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
  ::_exit(127);
}

BackgroundCommand::~BackgroundCommand() {
  if (process_ <= 0) return;
  ::kill(process_, SIGTERM);
  ::waitpid(process_, nullptr, 0);
}

bool BackgroundCommand::isOver() {
  if (process_ > 0 && ::waitpid(process_, nullptr, WNOHANG) == process_) process_ = -1;
  return process_ <= 0;
}

}  // namespace testsupport
