#include "ztservice/load/Connection.h"

#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Environment.h"

namespace ztservice::parse {

namespace {

CURL* newHandle() {
  static const CURLcode started = curl_global_init(CURL_GLOBAL_DEFAULT);
  CURL* easy = started == CURLE_OK ? curl_easy_init() : nullptr;
  if (!easy) throw std::bad_alloc();
  return easy;
}

}  // namespace

Connection::Connection(std::chrono::milliseconds connecting, std::chrono::milliseconds transfer,
                       const std::string& authorities)
    : easy_(newHandle(), &curl_easy_cleanup) {
  set(CURLOPT_ERRORBUFFER, reason_);
  set(CURLOPT_NOSIGNAL, 1L);
  set(CURLOPT_PROTOCOLS_STR, "http,https");
  set(CURLOPT_FOLLOWLOCATION, 0L);
  set(CURLOPT_ACCEPT_ENCODING, "");
  set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(connecting.count()));
  set(CURLOPT_TIMEOUT_MS, static_cast<long>(transfer.count()));
  set(CURLOPT_WRITEFUNCTION, &onBody);
  set(CURLOPT_WRITEDATA, this);
  const std::string file = authorities.empty()
                               ? tovin::wideToUtf8(tovin::platform::environmentVariable("SSL_CERT_FILE"))
                               : authorities;
  if (!file.empty()) set(CURLOPT_CAINFO, file.c_str());
}

long Connection::perform(const std::string& address, uint64_t room) {
  body_.clear();
  room_ = room;
  isTooLong_ = false;
  reason_[0] = '\0';
  set(CURLOPT_URL, address.c_str());
  code_ = curl_easy_perform(easy_.get());
  long status = 0;
  curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &status);
  return code_ == CURLE_OK ? status : 0;
}

std::string Connection::failure() const { return reason_[0] ? reason_ : curl_easy_strerror(code_); }

std::string Connection::redirection() const {
  const char* to = nullptr;
  curl_easy_getinfo(easy_.get(), CURLINFO_REDIRECT_URL, &to);
  return to ? to : "";
}

std::string Connection::contentType() const {
  const char* type = nullptr;
  curl_easy_getinfo(easy_.get(), CURLINFO_CONTENT_TYPE, &type);
  return type ? type : "";
}

size_t Connection::onBody(char* bytes, size_t one, size_t count, void* data) {
  Connection& self = *static_cast<Connection*>(data);
  const size_t length = one * count;
  self.isTooLong_ = length > self.room_ - self.body_.size();
  if (self.isTooLong_) return 0;
  // No exception may pass through curl.
  try {
    self.body_.append(bytes, length);
  } catch (...) {
    return 0;
  }
  return length;
}

}  // namespace ztservice::parse
