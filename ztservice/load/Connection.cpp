#include "ztservice/load/Connection.h"

#include <utility>

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

void Connection::begin(const std::string& address, uint64_t room, std::function<Taker()> take) {
  body_.clear();
  chooseTaker_ = std::move(take);
  taker_ = nullptr;
  hasBegun_ = false;
  thrown_ = nullptr;
  room_ = room;
  isTooLong_ = false;
  reason_[0] = '\0';
  set(CURLOPT_URL, address.c_str());
}

long Connection::end(CURLcode code) {
  code_ = code;
  chooseTaker_ = nullptr;
  taker_ = nullptr;
  if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
  long status = 0;
  curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &status);
  return code_ == CURLE_OK ? status : 0;
}

void Connection::quieten() noexcept {
  curl_easy_setopt(easy_.get(), CURLOPT_VERBOSE, 0L);
  curl_easy_setopt(easy_.get(), CURLOPT_NOPROGRESS, 1L);
  curl_easy_setopt(easy_.get(), CURLOPT_HTTPHEADER, nullptr);
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
  // No exception may pass through curl.
  try {
    return self.takeBody({bytes, length}) ? length : 0;
  } catch (...) {
    self.keepException();
    return 0;
  }
}

bool Connection::takeBody(std::string_view bytes) {
  if (!hasBegun_ && chooseTaker_) taker_ = chooseTaker_();
  hasBegun_ = true;
  if (taker_) {
    taker_(bytes);
    return true;
  }
  isTooLong_ = bytes.size() > room_ - body_.size();
  if (!isTooLong_) body_ += bytes;
  return !isTooLong_;
}

}  // namespace ztservice::parse
