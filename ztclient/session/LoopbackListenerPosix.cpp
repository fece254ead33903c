#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tovinCore/Exception.h"
#include "ztclient/session/LoopbackListener.h"

namespace {

constexpr timeval silence{10, 0};

int descriptor(intptr_t handle) { return static_cast<int>(handle); }

// How many clients may wait.
constexpr int waiting = 128;

// The port, 0 when there is none to be had.
uint16_t listenOn(int socket, uint16_t port) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  auto* place = reinterpret_cast<sockaddr*>(&address);
  const bool listens = ::bind(socket, place, size) == 0 && ::listen(socket, waiting) == 0 &&
                       ::getsockname(socket, place, &size) == 0;
  return listens ? ntohs(address.sin_port) : 0;
}

}  // namespace

LoopbackListener::LoopbackListener(uint16_t port) : listener_(::socket(AF_INET, SOCK_STREAM, 0)) {
  if (listener_ != none) {
    ::fcntl(descriptor(listener_), F_SETFD, FD_CLOEXEC);
    // A port that was just given up is free again.
    const int yes = 1;
    ::setsockopt(descriptor(listener_), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    port_ = listenOn(descriptor(listener_), port);
  }
  if (port_ != 0) return;
  if (listener_ != none) ::close(descriptor(listener_));
  throw tovin::Exception(L"Unable to listen on a loopback port");
}

LoopbackListener::~LoopbackListener() {
  hangUp();
  ::close(descriptor(listener_));
}

bool LoopbackListener::accept(std::chrono::milliseconds patience) noexcept {
  hangUp();
  pollfd client{descriptor(listener_), POLLIN, 0};
  if (::poll(&client, 1, static_cast<int>(patience.count())) != 1) return false;
  connection_ = ::accept(descriptor(listener_), nullptr, nullptr);
  if (connection_ == none) return false;
  ::setsockopt(descriptor(connection_), SOL_SOCKET, SO_RCVTIMEO, &silence, sizeof silence);
  ::setsockopt(descriptor(connection_), SOL_SOCKET, SO_SNDTIMEO, &silence, sizeof silence);
  return true;
}

size_t LoopbackListener::receive(char* bytes, size_t capacity) noexcept {
  const ssize_t count = ::recv(descriptor(connection_), bytes, capacity, 0);
  return count > 0 ? static_cast<size_t>(count) : 0;
}

bool LoopbackListener::send(std::string_view bytes) noexcept {
  while (!bytes.empty()) {
    const ssize_t count = ::send(descriptor(connection_), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(count));
  }
  return true;
}

void LoopbackListener::hangUp() noexcept {
  if (connection_ != none) ::close(descriptor(connection_));
  connection_ = none;
}
