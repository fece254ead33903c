#include "ztservice/call/Sending.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <thread>
#include <vector>

#include "ztservice/load/Location.h"

namespace ztservice::call {

namespace {

constexpr const char* secretHeaders[] = {"authorization:", "proxy-authorization:", "cookie:", "set-cookie:"};

bool startsWithFolded(std::string_view text, std::string_view lower) {
  if (text.size() < lower.size()) return false;
  return std::equal(lower.begin(), lower.end(), text.begin(), [](char a, char b) {
    return a == (b >= 'A' && b <= 'Z' ? static_cast<char>(b + ('a' - 'A')) : b);
  });
}

// A header without what authorizes: its name stays.
std::string withoutSecrets(std::string_view line) {
  for (const std::string_view name : secretHeaders) {
    if (startsWithFolded(line, name)) return std::string(line.substr(0, name.size())) + " (hidden)\r\n";
  }
  return std::string(line);
}

// Nor what a request calls a secret.
std::string without(const std::vector<std::string>& secrets, std::string text) {
  constexpr std::string_view hidden = "(hidden)";
  for (const std::string& secret : secrets) {
    for (size_t at = text.find(secret); at != text.npos; at = text.find(secret, at + hidden.size()))
      text.replace(at, secret.size(), hidden);
  }
  return text;
}

}  // namespace

void Sending::prepare(parse::Connection& connection) {
  connection.set(CURLOPT_READFUNCTION, &onRead);
  connection.set(CURLOPT_SEEKFUNCTION, &onSeek);
  connection.set(CURLOPT_DEBUGFUNCTION, &onTrace);
  connection.set(CURLOPT_XFERINFOFUNCTION, &onProgress);
  connection.set(CURLOPT_HTTPAUTH, CURLAUTH_BASIC | CURLAUTH_DIGEST);
}

Sending::Sending(parse::Connection& connection, const ClientOptions& options, const Request& request)
    : connection_(connection), options_(options), request_(request), body_(request), at_(request.address) {}

HttpAnswer Sending::run() {
  for (;;) {
    start();
    std::optional<HttpAnswer> answer = finish(connection_.perform());
    if (answer) return std::move(*answer);
    std::this_thread::sleep_for(pause_);
  }
}

void Sending::start() {
  setHeaders();
  setBody();
  connection_.set(CURLOPT_READDATA, this);
  connection_.set(CURLOPT_SEEKDATA, this);
  connection_.set(CURLOPT_DEBUGDATA, this);
  connection_.set(CURLOPT_XFERINFODATA, this);
  connection_.set(CURLOPT_VERBOSE, options_.trace ? 1L : 0L);
  connection_.set(CURLOPT_NOPROGRESS, options_.progress ? 0L : 1L);
  parts_.reset();
  connection_.begin(at_, options_.answer.limits.bytes, [this] { return takerOf(); });
}

void Sending::addHeader(const std::string& line) {
  curl_slist* const longer = curl_slist_append(headers_.get(), line.c_str());
  if (!longer) throw std::bad_alloc();
  static_cast<void>(headers_.release());
  headers_.reset(longer);
}

// What authorizes is for the server that was asked, and for no other that it leads to.
void Sending::setHeaders() {
  const bool isSameServer = parse::location::originOf(at_) == parse::location::originOf(request_.address);
  headers_.reset();
  for (const auto& [name, value] : request_.headers) {
    if (isSameServer || !isSecret(name, value)) addHeader(value.empty() ? name + ';' : name + ": " + value);
  }
  addHeader("Expect:");
  if (isSameServer && !options_.bearer.empty()) addHeader("Authorization: Bearer " + options_.bearer);
  connection_.set(CURLOPT_HTTPHEADER, headers_.get());
  connection_.set(CURLOPT_USERPWD, isSameServer && !options_.user.empty() ? options_.user.c_str() : nullptr);
}

bool Sending::isSecret(std::string_view name, std::string_view value) const {
  const std::string line = std::string(name) + ':';
  return std::any_of(std::begin(secretHeaders), std::end(secretHeaders),
                     [&line](const char* one) { return startsWithFolded(line, one); }) ||
         std::find(request_.secrets.begin(), request_.secrets.end(), value) != request_.secrets.end();
}

void Sending::setBody() {
  body_.rewind();
  if (request_.method == "GET") {
    connection_.set(CURLOPT_HTTPGET, 1L);
  } else {
    const bool isAlone = request_.attachments.empty();
    connection_.set(CURLOPT_POST, 1L);
    connection_.set(CURLOPT_POSTFIELDS, isAlone ? request_.body.c_str() : nullptr);
    connection_.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body_.size()));
  }
  const bool isUsual = request_.method == "GET" || request_.method == "POST";
  connection_.set(CURLOPT_CUSTOMREQUEST, isUsual ? nullptr : request_.method.c_str());
}

std::optional<HttpAnswer> Sending::finish(long status) {
  constexpr int mostRedirections = 5;
  connection_.quieten();
  pause_ = std::chrono::milliseconds(0);
  if (connection_.isTooLong())
    fail("more than the " + std::to_string(options_.answer.limits.bytes) + " bytes that are allowed");
  if (status == 0 && tries_ < options_.retries && wasNotSent()) {
    pause_ = std::chrono::milliseconds(100) * (1U << std::min(tries_, 6U));
    ++tries_;
    return {};
  }
  if (status == 0) fail(connection_.failure());
  const std::string to = connection_.redirection();
  if (to.empty()) return answer(status);
  if (redirections_ == mostRedirections)
    fail("more than " + std::to_string(mostRedirections) + " redirections");
  at_ = redirected(to, status);
  ++redirections_;
  tries_ = 0;
  return {};
}

void Sending::fail(const std::string& text) const { throw Error({parse::location::shown(at_)}, text); }

HttpAnswer Sending::answer(long status) {
  if (!parts_) return {status, connection_.contentType(), std::move(connection_.body()), {}};
  RelatedParts parts = parts_->take();
  return {status, parts.mediaType, std::move(parts.root), std::move(parts.parts)};
}

// What comes with parts is taken apart as it comes.
parse::Connection::Taker Sending::takerOf() {
  const std::string type = connection_.contentType();
  if (!isMultipart(type) || !connection_.redirection().empty()) return {};
  const AnswerLimits& limits = options_.answer.limits;
  parts_.emplace(type, limits.bytes, limits.fileBytes, options_.fileFor);
  return [this](std::string_view bytes) { parts_->feed(bytes); };
}

std::string Sending::redirected(const std::string& to, long status) const {
  using namespace parse::location;
  const std::string where = shown(to);
  if (!isWeb(to)) fail("redirects to " + where + ", which is neither HTTP nor HTTPS");
  if (schemeOf(at_) == "https" && schemeOf(to) == "http")
    fail("redirects to " + where + ", which is not encrypted");
  if (status == 303 && request_.method != "GET")
    fail("redirects to " + where + ", which would have to be read without the request");
  if (originOf(at_) == originOf(to)) return to;
  if (!options_.redirectsAnywhere) fail("redirects to " + where + ", which is another server");
  for (const std::string& secret : request_.secrets) {
    if (request_.body.find(secret) != std::string::npos)
      fail("redirects to " + where + ", another server, which the password in the message is not for");
  }
  return to;
}

bool Sending::wasNotSent() const {
  return connection_.code() == CURLE_COULDNT_CONNECT || connection_.code() == CURLE_COULDNT_RESOLVE_HOST;
}

void Sending::trace(curl_infotype kind, std::string_view bytes) const {
  const bool isOut = kind == CURLINFO_HEADER_OUT || kind == CURLINFO_DATA_OUT;
  const char direction = isOut ? '>' : '<';
  if (kind == CURLINFO_HEADER_OUT || kind == CURLINFO_HEADER_IN) {
    while (!bytes.empty()) {
      const size_t end = std::min(bytes.find('\n'), bytes.size() - 1) + 1;
      options_.trace(direction, without(request_.secrets, withoutSecrets(bytes.substr(0, end))));
      bytes.remove_prefix(end);
    }
  } else if (kind == CURLINFO_DATA_OUT && !request_.secrets.empty()) {
    // In what is compressed a secret cannot be found.
    const bool isCompressed =
        std::any_of(request_.headers.begin(), request_.headers.end(),
                    [](const auto& header) { return header.first == "Content-Encoding"; });
    options_.trace(direction, isCompressed ? std::to_string(bytes.size()) + " bytes, compressed (hidden)"
                                           : without(request_.secrets, std::string(bytes)));
  } else if (kind == CURLINFO_DATA_OUT || kind == CURLINFO_DATA_IN) {
    options_.trace(direction, bytes);
  }
}

// No exception may pass through curl.
size_t Sending::onRead(char* out, size_t one, size_t count, void* data) {
  Sending& self = *static_cast<Sending*>(data);
  try {
    return self.body_.read(out, one * count);
  } catch (...) {
    self.connection_.keepException();
    return CURL_READFUNC_ABORT;
  }
}

// From the beginning only: for a request that goes once more.
int Sending::onSeek(void* data, curl_off_t offset, int origin) {
  if (offset != 0 || origin != SEEK_SET) return CURL_SEEKFUNC_CANTSEEK;
  static_cast<Sending*>(data)->body_.rewind();
  return CURL_SEEKFUNC_OK;
}

int Sending::onTrace(CURL*, curl_infotype kind, char* bytes, size_t size, void* data) {
  Sending& self = *static_cast<Sending*>(data);
  try {
    self.trace(kind, {bytes, size});
    return 0;
  } catch (...) {
    return 0;
  }
}

int Sending::onProgress(void* data, curl_off_t toCome, curl_off_t came, curl_off_t toGo, curl_off_t went) {
  Sending& self = *static_cast<Sending*>(data);
  try {
    const bool isComing = came > 0;
    self.options_.progress(static_cast<uint64_t>(isComing ? came : went),
                           static_cast<uint64_t>(isComing ? toCome : toGo));
    return 0;
  } catch (...) {
    self.connection_.keepException();
    return 1;
  }
}

}  // namespace ztservice::call
