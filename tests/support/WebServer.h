#pragma once

#include <optional>
#include <string>

#include "tests/support/TempFolder.h"

namespace testsupport {

/// lighttpd on a loopback port with the upload script of tests/data, in a folder of its own. Dies with the
/// test, whatever ends it.
class WebServer {
 public:
  /// \param configuration further lines of it. \param host how URLs name the server.
  explicit WebServer(const std::string& configuration = {}, const std::string& host = "127.0.0.1");
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  std::string url(const std::string& query = {}) const {
    return scheme_ + "://" + host_ + ":" + std::to_string(port_) + "/upload.pl" + query;
  }
  /// What the script got in the last upload, as it tells; empty when it got none.
  std::string report() const { return folder_.read("report"); }

 private:
  void awaitStart();

  TempFolder folder_;
  std::string scheme_ = "http";
  std::string host_;
  int port_ = 0;
  std::optional<BackgroundCommand> process_;
};

/// A loopback port that nobody listens on.
int freePort();

}  // namespace testsupport
