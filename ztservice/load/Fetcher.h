#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "ztservice/load/Options.h"

namespace ztservice::parse {

class Connection;

// Reads documents from the network: over HTTP and HTTPS, with certificates verified and within the limits.
// Redirections are followed as far as they lead to HTTP or HTTPS, and never from HTTPS to HTTP; a user and a
// password go to the origin of the first document only. Proxies are those of the environment.
class Fetcher {
 public:
  explicit Fetcher(const Options& options);
  Fetcher(const Fetcher&) = delete;
  Fetcher& operator=(const Fetcher&) = delete;
  ~Fetcher();

  struct Answer {
    std::string body;
    // Where it came from in the end.
    std::string address;
  };
  // Errors: Error, with the address without user and password.
  Answer fetch(const std::string& address);

 private:
  long request(const std::string& address, uint64_t room);
  std::string redirected(const std::string& from, const std::string& to) const;

  const Options& options_;
  // For all requests, so that connections are kept.
  std::unique_ptr<Connection> connection_;
  std::string firstOrigin_;
  size_t documents_ = 0;
  uint64_t bytes_ = 0;
};

}  // namespace ztservice::parse
