#pragma once

#include <curl/curl.h>

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <string_view>

namespace ztservice::parse {

// A handle of curl that keeps its connections, for HTTP and HTTPS only: it verifies certificates, follows no
// redirection of its own accord and takes no more of a body than there is room for.
class Connection {
 public:
  // \param authorities a file of them; empty for what SSL_CERT_FILE names, else those of the system.
  // Errors: std::bad_alloc.
  Connection(std::chrono::milliseconds connecting, std::chrono::milliseconds transfer,
             const std::string& authorities);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  template <class Value>
  void set(CURLoption option, Value value) {
    if (curl_easy_setopt(easy_.get(), option, value) != CURLE_OK) throw std::bad_alloc();
  }

  // Takes a body where it does not go into memory; what it throws ends the transfer, and is thrown again.
  using Taker = std::function<void(std::string_view)>;

  // Sets it up for a transfer. \param take asked when the body begins; none for memory.
  void begin(const std::string& address, uint64_t room, std::function<Taker()> take = {});
  // What came of the transfer: the status, 0 where there is none.
  long end(CURLcode code);
  // The transfer that was begun, to its end.
  long perform() { return end(curl_easy_perform(easy_.get())); }
  CURL* handle() noexcept { return easy_.get(); }
  // Calls nothing any more that was set for one transfer, and forgets its headers.
  void quieten() noexcept;
  // Keeps what a callback throws, for perform() to throw.
  void keepException() noexcept { thrown_ = std::current_exception(); }

  std::string& body() noexcept { return body_; }
  bool isTooLong() const noexcept { return isTooLong_; }
  CURLcode code() const noexcept { return code_; }
  std::string failure() const;
  // Where the server sends to; empty if nowhere.
  std::string redirection() const;
  std::string contentType() const;

 private:
  bool takeBody(std::string_view bytes);
  static size_t onBody(char* bytes, size_t one, size_t count, void* data);

  std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> easy_;
  std::string body_;
  std::function<Taker()> chooseTaker_;
  Taker taker_;
  bool hasBegun_ = false;
  std::exception_ptr thrown_;
  uint64_t room_ = 0;
  bool isTooLong_ = false;
  CURLcode code_ = CURLE_OK;
  char reason_[CURL_ERROR_SIZE] = "";
};

}  // namespace ztservice::parse
