#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "ztservice/call/Sending.h"
#include "ztservice/load/Connection.h"

namespace ztservice::call {

// Connections of a client that nobody uses at the moment.
class Client::Pool {
 public:
  // The options outlive it.
  explicit Pool(const ClientOptions& options) : options_(options) {}

  const ClientOptions& options() const noexcept { return options_; }

  std::unique_ptr<parse::Connection> take() {
    {
      const std::lock_guard guard(lock_);
      if (!idle_.empty()) {
        std::unique_ptr<parse::Connection> last = std::move(idle_.back());
        idle_.pop_back();
        return last;
      }
    }
    return make();
  }

  void giveBack(std::unique_ptr<parse::Connection> connection) {
    const std::lock_guard guard(lock_);
    idle_.push_back(std::move(connection));
  }

 private:
  std::unique_ptr<parse::Connection> make() const {
    auto connection =
        std::make_unique<parse::Connection>(options_.connecting, options_.transfer, options_.authorities);
    connection->set(CURLOPT_COOKIEFILE, "");
    connection->set(CURLOPT_PATH_AS_IS, 1L);
    Sending::prepare(*connection);
    if (!options_.certificate.empty()) connection->set(CURLOPT_SSLCERT, options_.certificate.c_str());
    if (!options_.key.empty()) connection->set(CURLOPT_SSLKEY, options_.key.c_str());
    if (!options_.proxy.empty()) connection->set(CURLOPT_PROXY, options_.proxy.c_str());
    return connection;
  }

  const ClientOptions& options_;
  std::mutex lock_;
  std::vector<std::unique_ptr<parse::Connection>> idle_;
};

}  // namespace ztservice::call
