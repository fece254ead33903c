#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ztservice/call/Answer.h"
#include "ztservice/call/Request.h"

namespace ztservice::call {

/// How requests go out, and what is taken back.
struct ClientOptions {
  std::chrono::milliseconds connecting{30'000};
  std::chrono::milliseconds transfer{300'000};
  /// NAME:PASSWORD, for servers that ask for a user: basic or digest, as they ask.
  std::string user;
  /// A token that goes along with every request.
  std::string bearer;
  /// A file with the certificates of authorities; empty for SSL_CERT_FILE, else the system's.
  std::string authorities;
  /// A file with the client's certificate and, unless it stands there too, one with its key; PEM.
  std::string certificate;
  std::string key;
  /// Empty for that of the environment.
  std::string proxy;
  /// Whether a redirection to another scheme, host or port is followed; never from HTTPS to HTTP.
  bool redirectsAnywhere = false;
  /// How often a connection is tried again that could not be made: nothing was sent by then.
  unsigned retries = 0;
  AnswerOptions answer;
  /// Told each request before it goes: adds what authorizes it, as a session's credentials in a header.
  std::function<void(Request&)> prepare;
  /// Names a new file for what comes beside an answer, as it begins; empty for one that stays in memory. The
  /// file is made by the client, which overwrites none.
  std::function<std::string(const MimePart&)> fileFor;
  /// Told how many bytes went and came, and how many there will be, 0 where nobody knows.
  std::function<void(uint64_t done, uint64_t total)> progress;
  /// Told what goes over the wire, '>' out and '<' in, in lines and pieces; what authorizes is left out.
  std::function<void(char direction, std::string_view bytes)> trace;
};

/// An answer of HTTP; of one with parts the root's type and bytes, and the others.
struct HttpAnswer {
  long status = 0;
  std::string contentType;
  std::string body;
  std::vector<MimePart> attachments;
};

/// Calls operations of a service.
///
///     ztservice::call::Client client(ztservice::load("orders.wsdl"));
///     ztservice::call::Value order;
///     order["item"]["id"] = "7";
///     const auto answer = client.call("PlaceOrder", order);
///
/// - Threads: any number may call at once, each over a connection of its own, which is kept for the next
/// call.
/// - Cookies: kept from call to call, as long as the client lives, for each connection.
class ZTSERVICE_API Client {
 public:
  explicit Client(Service service, ClientOptions options = {});
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;
  ~Client();

  /// An operation by its name, of the first port of SOAP that has it, else of the first one.
  /// Errors: those below; Error where there is none.
  Answer call(std::string_view operation, const Value& values, const RequestOptions& options = {});
  /// Errors: those of makeRequest() and readAnswer(); Error with the status and the first line of what came
  /// for an answer that is none, and with the reason where none came.
  Answer call(const Port& port, const Operation& operation, const Value& values,
              const RequestOptions& options = {});

  /// Sends a request as it is. Errors: Error where there is no answer.
  HttpAnswer send(const Request& request);
  /// What an answer says to an operation.
  Answer read(const Port& port, const Operation& operation, const HttpAnswer& answer) const;

 private:
  friend class Calls;
  class Pool;

  Service service_;
  ClientOptions options_;
  std::unique_ptr<Pool> pool_;
};

}  // namespace ztservice::call
