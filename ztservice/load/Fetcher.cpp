#include "ztservice/load/Fetcher.h"

#include <curl/curl.h>

#include <algorithm>

#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Environment.h"
#include "ztservice/Error.h"
#include "ztservice/load/Location.h"

namespace ztservice::parse {

// One handle for all requests, so that connections are kept.
struct Fetcher::Connection {
  std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> easy{nullptr, &curl_easy_cleanup};
  std::string body;
  uint64_t room = 0;
  bool isTooLong = false;
  char reason[CURL_ERROR_SIZE] = "";

  template <class Value>
  void set(CURLoption option, Value value) {
    if (curl_easy_setopt(easy.get(), option, value) != CURLE_OK) throw std::bad_alloc();
  }

  static size_t onBody(char* bytes, size_t one, size_t count, void* data) {
    Connection& self = *static_cast<Connection*>(data);
    const size_t length = one * count;
    self.isTooLong = length > self.room - self.body.size();
    if (self.isTooLong) return 0;
    // No exception may pass through curl.
    try {
      self.body.append(bytes, length);
    } catch (...) {
      return 0;
    }
    return length;
  }

  void open(const Options& options) {
    static const CURLcode started = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (easy) return;
    easy.reset(started == CURLE_OK ? curl_easy_init() : nullptr);
    if (!easy) throw std::bad_alloc();
    set(CURLOPT_ERRORBUFFER, reason);
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_FOLLOWLOCATION, 0L);
    set(CURLOPT_ACCEPT_ENCODING, "");
    set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(options.limits.connecting.count()));
    set(CURLOPT_TIMEOUT_MS, static_cast<long>(options.limits.transfer.count()));
    set(CURLOPT_WRITEFUNCTION, &onBody);
    set(CURLOPT_WRITEDATA, this);
    const std::string authorities =
        options.authorities.empty() ? tovin::wideToUtf8(tovin::platform::environmentVariable("SSL_CERT_FILE"))
                                    : options.authorities;
    if (!authorities.empty()) set(CURLOPT_CAINFO, authorities.c_str());
  }

  // The status, 0 where there is none.
  long request(const std::string& address, const Options& options, bool withUser, uint64_t most) {
    open(options);
    body.clear();
    room = most;
    isTooLong = false;
    reason[0] = '\0';
    set(CURLOPT_URL, address.c_str());
    set(CURLOPT_USERPWD, withUser && !options.user.empty() ? options.user.c_str() : nullptr);
    set(CURLOPT_HTTPAUTH, CURLAUTH_BASIC | CURLAUTH_DIGEST);
    set(CURLOPT_NETRC,
        options.netrc ? static_cast<long>(CURL_NETRC_OPTIONAL) : static_cast<long>(CURL_NETRC_IGNORED));
    code = curl_easy_perform(easy.get());
    long status = 0;
    curl_easy_getinfo(easy.get(), CURLINFO_RESPONSE_CODE, &status);
    return code == CURLE_OK ? status : 0;
  }

  std::string redirection() const {
    const char* to = nullptr;
    curl_easy_getinfo(easy.get(), CURLINFO_REDIRECT_URL, &to);
    return to ? to : "";
  }

  std::string failure() const { return reason[0] ? reason : curl_easy_strerror(code); }

  CURLcode code = CURLE_OK;
};

Fetcher::Fetcher(const Options& options) : options_(options), connection_(std::make_unique<Connection>()) {}

Fetcher::~Fetcher() = default;

std::string Fetcher::redirected(const std::string& from, const std::string& to) const {
  const Place place{location::shown(from)};
  const std::string where = location::shown(to);
  if (!location::isWeb(to)) throw Error(place, "redirects to " + where + ", which is neither HTTP nor HTTPS");
  if (location::schemeOf(from) == "https" && location::schemeOf(to) == "http")
    throw Error(place, "redirects to " + where + ", which is not encrypted");
  return to;
}

Fetcher::Answer Fetcher::fetch(const std::string& address) {
  const Limits& limits = options_.limits;
  if (documents_ == 0) firstOrigin_ = location::originOf(address);
  if (++documents_ > limits.documents)
    throw Error({location::shown(address)},
                "more than " + std::to_string(limits.documents) + " documents from the network");
  std::string at = address;
  for (size_t redirections = 0;; ++redirections) {
    const Place place{location::shown(at)};
    const uint64_t room = std::min(limits.documentBytes, limits.serviceBytes - bytes_);
    const long status = connection_->request(at, options_, location::originOf(at) == firstOrigin_, room);
    if (connection_->isTooLong)
      throw Error(place, "more than the " + std::to_string(room) + " bytes that are allowed");
    if (status == 0) throw Error(place, connection_->failure());
    const std::string to = connection_->redirection();
    if (to.empty()) {
      if (status < 200 || status > 299) throw Error(place, "the server answers " + std::to_string(status));
      bytes_ += connection_->body.size();
      return {std::move(connection_->body), at};
    }
    if (redirections == limits.redirects)
      throw Error(place, "more than " + std::to_string(limits.redirects) + " redirections");
    at = redirected(at, to);
  }
}

}  // namespace ztservice::parse
