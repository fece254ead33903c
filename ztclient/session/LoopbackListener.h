#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// A listening socket on a loopback port, and one connection of it at a time.
///
/// - Ownership: owns its sockets.
/// - Errors: only making one fails, "Unable to listen on a loopback port"; what happens to a connection is a
///   false result, as when the other side went away.
/// - Threads: one thread at a time.
class LoopbackListener {
 public:
  /// \param port 0 for one that the system chooses.
  explicit LoopbackListener(uint16_t port = 0);
  LoopbackListener(const LoopbackListener&) = delete;
  LoopbackListener& operator=(const LoopbackListener&) = delete;
  ~LoopbackListener();

  uint16_t port() const noexcept { return port_; }
  /// Hangs up and waits for the next connection; false when none came.
  bool accept(std::chrono::milliseconds patience) noexcept;
  /// How many bytes arrived; 0 when no more will, or none did for some seconds.
  size_t receive(char* bytes, size_t capacity) noexcept;
  bool send(std::string_view bytes) noexcept;
  void hangUp() noexcept;

 private:
  static constexpr intptr_t none = -1;

  intptr_t listener_ = none;
  intptr_t connection_ = none;
  uint16_t port_ = 0;
};
