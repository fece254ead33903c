#pragma once

#include <chrono>
#include <cstddef>
#include <exception>
#include <functional>
#include <memory>

#include "ztservice/call/Client.h"

namespace ztservice::call {

/// Requests of a client that are on their way at the same time, without a thread for each.
///
///     Calls calls(client, 8);
///     for (const Value& order : orders)
///       calls.add(makeRequest(service, port, operation, order), [&](Calls::Outcome outcome) { … });
///     calls.finish();
///
/// - Threads: one; what is told is told in add(), wait() and finish(), as it comes.
/// - Memory: that of the calls that are open.
class ZTSERVICE_API Calls {
 public:
  /// The answer, or what Client::send() would have thrown.
  struct Outcome {
    HttpAnswer answer;
    std::exception_ptr error;
  };
  using Done = std::function<void(Outcome outcome)>;

  /// The client outlives it. \param most how many may be open; the next one waits for room.
  explicit Calls(Client& client, size_t most = 16);
  Calls(const Calls&) = delete;
  Calls& operator=(const Calls&) = delete;
  /// Gives up those that are open, without telling.
  ~Calls();

  /// Errors: what `done` throws; that call is told then, and the others go on.
  void add(Request request, Done done);
  /// Goes on for so long, or until a call is done. \return whether some are open still. Errors: as above.
  bool wait(std::chrono::milliseconds patience);
  /// Until none is open. Errors: as above.
  void finish();
  size_t open() const noexcept;

 private:
  class Transfers;
  std::unique_ptr<Transfers> transfers_;
};

}  // namespace ztservice::call
