#include "tests/support/SocketServer.h"

#include <chrono>
#include <cstdlib>

namespace testsupport {

bool Connection::receive() {
  char piece[65536];
  const int64_t count = receiveFrom(socket_, piece, sizeof piece);
  if (count > 0) bytes_.append(piece, static_cast<size_t>(count));
  return count > 0;
}

std::string Connection::take(size_t count) {
  while (bytes_.size() < count && receive()) {
  }
  const std::string taken = bytes_.substr(0, count);
  bytes_.erase(0, count);
  return taken;
}

std::string Connection::takeUntil(const std::string& mark) {
  size_t end;
  while ((end = bytes_.find(mark)) == std::string::npos) {
    if (!receive()) return {};
  }
  return take(end + mark.size());
}

std::string Connection::readHead() { return takeUntil("\r\n\r\n"); }

std::string Connection::readBody() {
  std::string body;
  for (;;) {
    const std::string line = takeUntil("\r\n");
    const size_t count = std::strtoul(line.c_str(), nullptr, 16);
    body += take(count);
    take(2);
    if (count == 0) return body;
  }
}

std::string Connection::readRequest() {
  const std::string head = readHead();
  return head + readBody();
}

void Connection::send(const std::string& bytes) const {
  for (size_t done = 0; done < bytes.size();) {
    const int64_t count = sendTo(socket_, bytes.data() + done, bytes.size() - done);
    if (count <= 0) return;
    done += static_cast<size_t>(count);
  }
}

void Connection::hold(const std::atomic<bool>& stopping) const {
  while (!stopping) std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

SocketServer::SocketServer(std::vector<Script> scripts)
    : scripts_(std::move(scripts)), listener_(listenOnLoopback(port_)), thread_([this] { serve(); }) {}

SocketServer::~SocketServer() {
  stopping_ = true;
  thread_.join();
  closeSocket(listener_);
}

std::wstring SocketServer::url(const std::wstring& path, const std::wstring& credentials) const {
  return L"http://" + credentials + L"127.0.0.1:" + std::to_wstring(port_) + path;
}

void SocketServer::serve() {
  while (!stopping_) {
    const Socket socket = acceptWithin(listener_, 5);
    if (socket == noSocket) continue;
    Connection connection(socket);
    const size_t index = connections_++;
    if (index < scripts_.size()) scripts_[index](connection);
    closeSocket(socket);
  }
}

}  // namespace testsupport
