#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "ztclient/session/LoopbackListener.h"

/// The other end of an upload for a client that has no server at hand: it listens on a loopback port, takes
/// forms at any path that ends in "/upload.pl", and answers what it found in them, or why it refuses.
///
///     UploadServer server;
///     upload(server.url() + "/perlbin/upload.pl");
///     if (const auto received = server.received()) show(received->file);
///
/// - Limits: heads of 64 KiB, bodies of 64 MiB; more is refused.
/// - Threads: serves in a thread of its own until it dies.
class UploadServer {
 public:
  /// The form of an upload.
  struct Received {
    std::string fileName;
    std::string session;
    /// What the client calls the file in the section itself.
    std::string path;
    std::optional<std::string> job;
    /// The file as it was before it was compressed.
    std::string file;
    std::string encoding;
    /// Bytes of the file on the wire, and the chunks of the whole body.
    size_t encodedSize = 0;
    size_t chunks = 0;
  };

  UploadServer();
  UploadServer(const UploadServer&) = delete;
  UploadServer& operator=(const UploadServer&) = delete;
  ~UploadServer();

  /// "http://127.0.0.1:" and the port.
  std::string url() const;
  /// The last upload that was taken, once; none if there was none.
  std::optional<Received> received();

 private:
  void serve();

  LoopbackListener listener_;
  std::atomic<bool> stopping_ = false;
  std::mutex mutex_;
  std::optional<Received> received_;
  std::thread thread_;
};
