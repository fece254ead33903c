#include "tests/support/SocketServer.h"

#include <chrono>
#include <cstdlib>

namespace testsupport {

bool Connection::receive() {
  char piece[65536];
  const size_t count = socket_.receive(piece, sizeof piece);
  bytes_.append(piece, count);
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
  const std::string counted = "\r\nContent-Length: ";
  const size_t at = head.find(counted);
  return head + (at == head.npos ? readBody() : take(std::strtoul(&head[at + counted.size()], nullptr, 10)));
}

void Connection::hold(const std::atomic<bool>& stopping) const {
  while (!stopping) std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

SocketServer::SocketServer(std::vector<Script> scripts)
    : scripts_(std::move(scripts)), thread_([this] { serve(); }) {}

SocketServer::~SocketServer() {
  stopping_ = true;
  thread_.join();
}

std::wstring SocketServer::url(const std::wstring& path, const std::wstring& credentials) const {
  return L"http://" + credentials + L"127.0.0.1:" + std::to_wstring(listener_.port()) + path;
}

void SocketServer::serve() {
  while (!stopping_) {
    if (!listener_.accept(std::chrono::milliseconds(5))) continue;
    Connection connection(listener_);
    const size_t index = connections_++;
    if (index < scripts_.size()) scripts_[index](connection);
    listener_.hangUp();
  }
}

}  // namespace testsupport
