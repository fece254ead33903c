// Before windows.h, which would bring in an older one.
#include <winsock2.h>
// After it.
#include <windows.h>

#include "tovinCore/Exception.h"
#include "ztclient/session/LoopbackListener.h"

namespace {

constexpr DWORD silence = 10'000;  // ms

SOCKET socketOf(intptr_t handle) { return static_cast<SOCKET>(handle); }

bool startSockets() {
  static const bool started = [] {
    WSADATA data;
    return ::WSAStartup(MAKEWORD(2, 2), &data) == 0;
  }();
  return started;
}

intptr_t newSocket() {
  return startSockets() ? static_cast<intptr_t>(::socket(AF_INET, SOCK_STREAM, 0)) : -1;
}

// How many clients may wait.
constexpr int waiting = 128;

// The port, 0 when there is none to be had.
uint16_t listenOn(SOCKET socket, uint16_t port) {
  sockaddr_in address{};
  int size = sizeof address;
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  auto* place = reinterpret_cast<sockaddr*>(&address);
  const bool listens = ::bind(socket, place, size) == 0 && ::listen(socket, waiting) == 0 &&
                       ::getsockname(socket, place, &size) == 0;
  return listens ? ntohs(address.sin_port) : 0;
}

void limitWaiting(SOCKET socket, int option) {
  ::setsockopt(socket, SOL_SOCKET, option, reinterpret_cast<const char*>(&silence), sizeof silence);
}

}  // namespace

LoopbackListener::LoopbackListener(uint16_t port) : listener_(newSocket()) {
  if (listener_ != none) port_ = listenOn(socketOf(listener_), port);
  if (port_ != 0) return;
  if (listener_ != none) ::closesocket(socketOf(listener_));
  throw tovin::Exception(L"Unable to listen on a loopback port");
}

LoopbackListener::~LoopbackListener() {
  hangUp();
  ::closesocket(socketOf(listener_));
}

bool LoopbackListener::accept(std::chrono::milliseconds patience) noexcept {
  hangUp();
  WSAPOLLFD client{socketOf(listener_), POLLIN, 0};
  if (::WSAPoll(&client, 1, static_cast<int>(patience.count())) != 1) return false;
  connection_ = static_cast<intptr_t>(::accept(socketOf(listener_), nullptr, nullptr));
  if (connection_ == none) return false;
  limitWaiting(socketOf(connection_), SO_RCVTIMEO);
  limitWaiting(socketOf(connection_), SO_SNDTIMEO);
  return true;
}

size_t LoopbackListener::receive(char* bytes, size_t capacity) noexcept {
  const int count = ::recv(socketOf(connection_), bytes, static_cast<int>(capacity), 0);
  return count > 0 ? static_cast<size_t>(count) : 0;
}

bool LoopbackListener::send(std::string_view bytes) noexcept {
  while (!bytes.empty()) {
    const int count = ::send(socketOf(connection_), bytes.data(), static_cast<int>(bytes.size()), 0);
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(count));
  }
  return true;
}

void LoopbackListener::hangUp() noexcept {
  if (connection_ != none) ::closesocket(socketOf(connection_));
  connection_ = none;
}
