#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "ztservice/call/BodyReader.h"
#include "ztservice/call/Client.h"
#include "ztservice/call/MultipartReader.h"
#include "ztservice/load/Connection.h"

namespace ztservice::call {

// One request on one connection, to where it is redirected and until it can be made.
class Sending {
 public:
  // What the connection is told once for all.
  static void prepare(parse::Connection& connection);

  // All of them outlive it.
  Sending(parse::Connection& connection, const ClientOptions& options, const Request& request);
  Sending(const Sending&) = delete;
  Sending& operator=(const Sending&) = delete;
  // The connection lives on, and does not tell us any more.
  ~Sending() { connection_.quieten(); }

  // Sets the connection up for a transfer.
  void start();
  // What came of it; nothing where it is to be started once more. Errors: those of Client::send().
  std::optional<HttpAnswer> finish(long status);
  // How long to wait before it is started once more.
  std::chrono::milliseconds pause() const noexcept { return pause_; }

  // The whole of it.
  HttpAnswer run();

 private:
  struct Free {
    void operator()(curl_slist* list) const noexcept { curl_slist_free_all(list); }
  };

  static size_t onRead(char* out, size_t one, size_t count, void* data);
  static int onSeek(void* data, curl_off_t offset, int origin);
  static int onTrace(CURL*, curl_infotype kind, char* bytes, size_t size, void* data);
  static int onProgress(void* data, curl_off_t toCome, curl_off_t came, curl_off_t toGo, curl_off_t went);

  [[noreturn]] void fail(const std::string& text) const;
  void addHeader(const std::string& line);
  void setHeaders();
  void setBody();
  HttpAnswer answer(long status);
  parse::Connection::Taker takerOf();
  void trace(curl_infotype kind, std::string_view bytes) const;
  std::string redirected(const std::string& to, long status) const;
  bool isSecret(std::string_view name, std::string_view value) const;
  bool wasNotSent() const;

  parse::Connection& connection_;
  const ClientOptions& options_;
  const Request& request_;
  BodyReader body_;
  std::unique_ptr<curl_slist, Free> headers_;
  std::optional<RelatedReader> parts_;
  std::string at_;
  int redirections_ = 0;
  unsigned tries_ = 0;
  std::chrono::milliseconds pause_{0};
};

}  // namespace ztservice::call
