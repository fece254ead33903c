#pragma once

#include <curl/curl.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "ztcore/CHttpException.h"
#include "ztcore/HttpTarget.h"

// One POST at a time on libcurl's multi interface, turned round: curl asks for the body through a callback,
// which pauses the request while there is nothing to give; push() lets it go on until its bytes are taken.
//
// libcurl repeats a request by itself when a kept connection turns out to be dead. With a body of which some
// bytes are gone that must not be: the request then ends with wasLost().
class HttpTransfer {
 public:
  struct Request {
    HttpTarget target;
    // How the credentials of the target go along: a CURLAUTH_ bit, or CURLAUTH_NONE.
    unsigned long authentication;
    // The same for those of a proxy; CURLAUTH_NONE leaves it to curl, which sends them as Basic.
    unsigned long proxyAuthentication;
    std::string contentType;
    bool afterContinue;
    unsigned connectTimeout;
    // Curl sends some by itself, for Digest and on kept connections that are dead.
    int mostRequests;
  };

  explicit HttpTransfer(int connections);
  HttpTransfer(const HttpTransfer&) = delete;
  HttpTransfer& operator=(const HttpTransfer&) = delete;
  ~HttpTransfer();

  void open(const Request& request);
  // Gives up what is under way; the answer that came so far stays.
  void close() noexcept;

  // Both return when curl has taken the bytes or the request is over. They raise "The server took no data for
  // %u ms" when it takes none for so long.
  void push(const char* bytes, size_t count, unsigned timeout);
  void endBody(unsigned timeout);
  // Returns when the request is over, at the latest one time-out behind the answer's head: what is missing of
  // its body then is left out. Raises "The server did not answer within %u ms".
  void awaitAnswer(unsigned timeout);
  // Asked while one of them waits; false raises "The request was cancelled".
  void setWatch(std::function<bool()> watch) { watch_ = std::move(watch); }

  bool isOpen() const noexcept { return open_; }
  bool isOver() const noexcept { return over_; }
  bool wasLost() const noexcept { return lost_; }
  // The request was on a kept connection, and not a byte came back.
  bool diedUnanswered() const noexcept;
  // Curl took the whole body.
  bool isComplete() const noexcept { return bodyEnded_ && pendingCount_ == 0 && waiting_.empty(); }
  // The server wants the body without being asked for its consent first.
  bool refusedExpectation() const noexcept { return expecting_ && headComplete_ && status_ == 417; }
  // Curl was to send more requests than were allowed.
  bool sentTooMany() const noexcept { return requests_ > mostRequests_; }
  int requests() const noexcept { return requests_; }
  // Null when nothing failed.
  const char* failure() const noexcept;
  CURLcode failureCode() const noexcept { return code_; }

  bool hasWholeHead() const noexcept { return headComplete_; }

  // 0 without an answer.
  long status() const noexcept { return status_; }
  const std::string& reason() const noexcept { return reason_; }
  const std::string& body() const noexcept { return body_; }
  // Empty unless the answer redirects.
  std::string redirection() const;
  // What the answer's challenge takes: the best of Digest and Basic, or CURLAUTH_NONE.
  unsigned long challenge() const { return bestOffer(CURLINFO_HTTPAUTH_AVAIL); }
  unsigned long proxyChallenge() const { return bestOffer(CURLINFO_PROXYAUTH_AVAIL); }

 private:
  using Clock = std::chrono::steady_clock;

  static size_t onRead(char* out, size_t one, size_t room, void* self);
  static size_t onHeader(char* line, size_t one, size_t count, void* self);
  static size_t onBody(char* bytes, size_t one, size_t count, void* self);
  static int onConnected(void* self, char*, char*, int, int);
  static int onRewind(void* self, curl_off_t, int);

  void setOptions(const Request& request);
  void setAuthentication(const Request& request);
  void setHeaders(const Request& request);
  size_t give(char* out, size_t room);
  bool takeHeader(std::string_view line);
  size_t takeBody(std::string_view bytes);
  void handOver(const char* bytes, size_t count, unsigned timeout);
  void flush(unsigned timeout);
  void dropWaiting() noexcept;
  void work();
  void waitUntil(Clock::time_point deadline);
  unsigned long bestOffer(CURLINFO offers) const;
  void finish(CURLcode code);

  std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)> multi_;
  std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> easy_;
  std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> headers_;
  char errorText_[CURL_ERROR_SIZE] = "";

  bool open_ = false;
  bool over_ = false;
  bool lost_ = false;
  bool paused_ = false;
  bool connected_ = false;
  bool bodyEnded_ = false;
  bool bodyFull_ = false;
  bool headComplete_ = false;
  bool expecting_ = false;
  int requests_ = 0;
  int mostRequests_ = 0;
  CURLcode code_ = CURLE_OK;
  std::function<bool()> watch_;
  Clock::time_point watched_{};

  // Small pieces, gathered: a session id is among them. Then the piece that curl is being given.
  tovin::SecretBytes waiting_;
  const char* pending_ = nullptr;
  size_t pendingCount_ = 0;
  uint64_t taken_ = 0;

  long status_ = 0;
  std::string reason_;
  std::string body_;
};
