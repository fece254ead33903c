#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "ztclient/session/LoopbackListener.h"

namespace testsupport {

/// One connection of a SocketServer.
class Connection {
 public:
  explicit Connection(LoopbackListener& socket) : socket_(socket) {}

  /// The head of a request, up to its empty line; empty when the other side closed.
  std::string readHead();
  /// A chunked body, put together.
  std::string readBody();
  void send(const std::string& bytes) { socket_.send(bytes); }
  /// Head and body, which is chunked unless a length is said.
  std::string readRequest();
  /// Reads nothing until the server stops.
  void hold(const std::atomic<bool>& stopping) const;

 private:
  bool receive();
  std::string take(size_t count);
  std::string takeUntil(const std::string& mark);

  LoopbackListener& socket_;
  std::string bytes_;
};

/// A server of one script a connection, in their order, on a loopback port: for what no real server would do.
/// A connection is closed when its script returns.
class SocketServer {
 public:
  using Script = std::function<void(Connection& connection)>;

  explicit SocketServer(std::vector<Script> scripts);
  SocketServer(const SocketServer&) = delete;
  SocketServer& operator=(const SocketServer&) = delete;
  ~SocketServer();

  std::wstring url(const std::wstring& path = L"/upload", const std::wstring& credentials = {}) const;
  /// For scripts that wait.
  const std::atomic<bool>& stopping() const { return stopping_; }
  /// How many connections were made.
  size_t connections() const { return connections_; }

 private:
  void serve();

  std::vector<Script> scripts_;
  LoopbackListener listener_;
  std::atomic<bool> stopping_ = false;
  std::atomic<size_t> connections_ = 0;
  std::thread thread_;
};

}  // namespace testsupport
