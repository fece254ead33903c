#include "ztservice/load/Fetcher.h"

#include <algorithm>

#include "ztservice/Error.h"
#include "ztservice/load/Connection.h"
#include "ztservice/load/Location.h"

namespace ztservice::parse {

Fetcher::Fetcher(const Options& options) : options_(options) {}

Fetcher::~Fetcher() = default;

std::string Fetcher::redirected(const std::string& from, const std::string& to) const {
  const Place place{location::shown(from)};
  const std::string where = location::shown(to);
  if (!location::isWeb(to)) throw Error(place, "redirects to " + where + ", which is neither HTTP nor HTTPS");
  if (location::schemeOf(from) == "https" && location::schemeOf(to) == "http")
    throw Error(place, "redirects to " + where + ", which is not encrypted");
  return to;
}

long Fetcher::request(const std::string& address, uint64_t room) {
  if (!connection_)
    connection_ = std::make_unique<Connection>(options_.limits.connecting, options_.limits.transfer,
                                               options_.authorities);
  const bool withUser = location::originOf(address) == firstOrigin_ && !options_.user.empty();
  connection_->set(CURLOPT_USERPWD, withUser ? options_.user.c_str() : nullptr);
  connection_->set(CURLOPT_HTTPAUTH, CURLAUTH_BASIC | CURLAUTH_DIGEST);
  connection_->set(CURLOPT_NETRC, options_.netrc ? static_cast<long>(CURL_NETRC_OPTIONAL)
                                                 : static_cast<long>(CURL_NETRC_IGNORED));
  connection_->begin(address, room);
  return connection_->perform();
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
    const long status = request(at, room);
    if (connection_->isTooLong())
      throw Error(place, "more than the " + std::to_string(room) + " bytes that are allowed");
    if (status == 0) throw Error(place, connection_->failure());
    const std::string to = connection_->redirection();
    if (to.empty()) {
      if (status < 200 || status > 299) throw Error(place, "the server answers " + std::to_string(status));
      bytes_ += connection_->body().size();
      return {std::move(connection_->body()), at};
    }
    if (redirections == limits.redirects)
      throw Error(place, "more than " + std::to_string(limits.redirects) + " redirections");
    at = redirected(at, to);
  }
}

}  // namespace ztservice::parse
