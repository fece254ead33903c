#include "tests/support/WebServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <thread>

namespace testsupport {
namespace {

sockaddr_in loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<uint16_t>(port));
  return address;
}

bool canConnect(int port) {
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_in address = loopback(port);
  const bool connected = ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  ::close(socket);
  return connected;
}

}  // namespace

int freePort() {
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = loopback(0);
  socklen_t size = sizeof address;
  if (::bind(socket, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
      ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::runtime_error("no free port");
  }
  ::close(socket);
  return ntohs(address.sin_port);
}

WebServer::WebServer(const std::string& configuration, const std::string& host)
    : host_(host), port_(freePort()) {
  if (configuration.find("ssl.engine") != std::string::npos) scheme_ = "https";
  std::filesystem::copy(ZTB_TEST_DATA "/upload/upload.pl", folder_.path("upload.pl"));
  start(folder_.write("lighttpd.conf",
                      "server.modules = (\"mod_cgi\", \"mod_openssl\")\n"
                      "server.bind = \"127.0.0.1\"\n"
                      "server.port = " +
                          std::to_string(port_) + "\nserver.document-root = \"" + folder_.path() +
                          "\"\nserver.errorlog = \"" + folder_.path("errors") +
                          "\"\nserver.upload-dirs = (\"" + folder_.path() +
                          "\")\ncgi.assign = (\".pl\" => \"/usr/bin/perl\")\n" + configuration));
  awaitStart();
}

void WebServer::start(const std::string& configurationFile) {
  const pid_t parent = ::getpid();
  process_ = ::fork();
  if (process_ < 0) throw std::runtime_error("no process");
  if (process_ > 0) return;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != parent) ::_exit(1);
  ::execl("/usr/sbin/lighttpd", "lighttpd", "-D", "-f", configurationFile.c_str(), nullptr);
  ::_exit(127);
}

void WebServer::awaitStart() {
  for (int i = 0; i < 500; ++i) {
    if (canConnect(port_)) return;
    if (::waitpid(process_, nullptr, WNOHANG) == process_) {
      process_ = -1;
      throw std::runtime_error("the server did not start:\n" + folder_.read("errors"));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  throw std::runtime_error("the server does not listen");
}

WebServer::~WebServer() {
  if (process_ <= 0) return;
  ::kill(process_, SIGTERM);
  ::waitpid(process_, nullptr, 0);
}

}  // namespace testsupport
