#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "ztclient/session/LoopbackListener.h"

/// What a connection brings, in the order of the protocol (HTTP/1.1).
///
/// - Limits: heads of 64 KiB, bodies of 64 MiB.
/// - Errors: an exception for whatever ends early, is damaged or too long.
class HttpReader {
 public:
  static constexpr size_t largestHead = 1 << 16;
  static constexpr size_t largestBody = 1 << 26;

  /// The connection outlives it.
  explicit HttpReader(LoopbackListener& connection) : connection_(connection) {}

  /// The request line and the header lines, each with its end.
  std::string readHead();
  /// The body that a head announces, in chunks or of a length; empty without one. Whoever waits for leave to
  /// send it gets it.
  /// \param chunks out: how many there were.
  std::string readBody(std::string_view head, size_t& chunks);

 private:
  std::string readChunks(size_t& count);
  std::string readCounted(std::string_view length);
  size_t chunkSize();
  void receive();
  std::string take(size_t count);
  std::string takeUntil(std::string_view mark, size_t largest);

  LoopbackListener& connection_;
  std::string bytes_;
  size_t at_ = 0;
};

/// A whole answer, after which the connection is closed.
/// \param status "200 OK". \param type the media type of the text, which is UTF-8.
std::string httpAnswer(std::string_view status, std::string_view type, const std::string& text);
