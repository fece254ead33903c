#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "ztclient/session/LoopbackListener.h"
#include "ztservice/Service.h"
#include "ztservice/call/Request.h"

/// A stand-in for a service: it takes requests of SOAP on a loopback port, checks them against their types,
/// and answers each with what it was given for the operation, else with a sample.
///
/// - Threads: one connection at a time, in the thread that runs it.
class MockServer {
 public:
  /// \param answers by operation: JSON of the values, or a whole envelope where it begins with "<".
  /// \param port 0 for one that the system chooses.
  /// Errors: "Unable to listen on a loopback port".
  MockServer(const ztservice::Service& service, std::map<std::string, std::string> answers, uint16_t port);

  std::string url() const;
  /// Answers until `goesOn` is false. \param tell a line for each request: what came, and what went.
  void run(const std::function<bool()>& goesOn, const std::function<void(const std::string&)>& tell);
  /// What a request is answered: the whole answer of HTTP.
  std::string answer(std::string_view head, const std::string& body, std::string& told) const;

 private:
  std::string answer(std::string_view head, const ztservice::call::RelatedParts& message,
                     std::string& told) const;
  std::string valuesFor(const ztservice::call::Target& target) const;

  const ztservice::Service& service_;
  std::map<std::string, std::string> answers_;
  LoopbackListener listener_;
};
