#pragma once

#include <string>

#include "ztservice/Error.h"
#include "ztservice/load/Options.h"

namespace ztservice::parse {

class Fetcher {
 public:
  explicit Fetcher(const Options& options) : options_(options) {}
  struct Answer {
    std::string body;
    std::string address;
  };
  Answer fetch(const std::string& address) { throw Error({address}, "lies on the network"); }

 private:
  [[maybe_unused]] const Options& options_;
};

}  // namespace ztservice::parse
