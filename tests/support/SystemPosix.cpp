#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

#include "tests/support/System.h"

namespace testsupport {
namespace {

sockaddr_in loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<uint16_t>(port));
  return address;
}

int descriptor(Socket socket) { return static_cast<int>(socket); }

}  // namespace

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

Socket listenOnLoopback(int& port) {
  const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = loopback(0);
  socklen_t size = sizeof address;
  if (::bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 || ::listen(listener, 16) != 0 ||
      ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::runtime_error("cannot listen");
  }
  port = ntohs(address.sin_port);
  return listener;
}

Socket acceptWithin(Socket listener, int milliseconds) {
  pollfd waiting{descriptor(listener), POLLIN, 0};
  if (::poll(&waiting, 1, milliseconds) <= 0) return noSocket;
  const int socket = ::accept4(descriptor(listener), nullptr, nullptr, SOCK_CLOEXEC);
  const timeval patience{10, 0};
  ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  return socket;
}

int64_t receiveFrom(Socket socket, char* bytes, size_t room) {
  return ::recv(descriptor(socket), bytes, room, 0);
}

int64_t sendTo(Socket socket, const char* bytes, size_t count) {
  return ::send(descriptor(socket), bytes, count, MSG_NOSIGNAL);
}

void closeSocket(Socket socket) { ::close(descriptor(socket)); }

bool canConnect(int port) {
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_in address = loopback(port);
  const bool connected = ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  ::close(socket);
  return connected;
}

}  // namespace testsupport
