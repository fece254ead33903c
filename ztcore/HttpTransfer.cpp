#include "ztcore/HttpTransfer.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Environment.h"
#include "tovinCore/platform/PipeSignal.h"

using tovin::platform::PipeSignalBlock;

namespace {

constexpr size_t smallPiece = 16 << 10;
constexpr size_t longestBody = size_t{1} << 20;
// So often a wait is looked up from.
constexpr std::chrono::milliseconds watchEvery(200);

void startCurl() {
  static const CURLcode started = curl_global_init(CURL_GLOBAL_DEFAULT);
  if (started != CURLE_OK) throw tovin::Exception(L"Unable to start HTTP: %hs", curl_easy_strerror(started));
}

// No exception may pass through curl: 0 tells it to give up.
template <class Body>
size_t shielded(Body&& body) noexcept {
  try {
    return body();
  } catch (...) {
    return 0;
  }
}

// Where curl leaves Digest to the system's security package, a package that is not there can keep it busy for
// ever.
bool computesDigest() {
  static const int features = curl_version_info(CURLVERSION_NOW)->features;
  return (features & CURL_VERSION_SSPI) == 0;
}

template <class Value>
void set(CURL* easy, CURLoption option, Value value) {
  const CURLcode code = curl_easy_setopt(easy, option, value);
  if (code != CURLE_OK)
    throw tovin::Exception(L"Unable to set up the request: %hs", curl_easy_strerror(code));
}

const char* orEmpty(const tovin::SecretString<char>& text) {
  return text.text().isNull() ? "" : text.text().c_str();
}

[[noreturn]] void raiseTimeOut(const wchar_t* pattern, unsigned timeout) {
  throw CHttpException({CHttpException::Kind::TimeOut}, tovin::format(pattern, timeout));
}

}  // namespace

HttpTransfer::HttpTransfer(int connections)
    : multi_((startCurl(), curl_multi_init()), curl_multi_cleanup),
      easy_(curl_easy_init(), curl_easy_cleanup),
      headers_(nullptr, curl_slist_free_all) {
  if (!multi_ || !easy_) throw tovin::MemoryException(1, 1);
  curl_multi_setopt(multi_.get(), CURLMOPT_MAXCONNECTS, static_cast<long>(std::max(connections, 1)));
}

// Connections that were kept take leave of their servers.
HttpTransfer::~HttpTransfer() {
  const PipeSignalBlock quiet;
  close();
  easy_.reset();
  multi_.reset();
}

void HttpTransfer::open(const Request& request) {
  const PipeSignalBlock quiet;
  close();
  over_ = lost_ = paused_ = connected_ = bodyEnded_ = bodyFull_ = headComplete_ = false;
  expecting_ = request.afterContinue;
  requests_ = 0;
  mostRequests_ = request.mostRequests;
  code_ = CURLE_OK;
  dropWaiting();
  pendingCount_ = 0;
  taken_ = 0;
  status_ = 0;
  reason_.clear();
  body_.clear();
  errorText_[0] = 0;
  setOptions(request);
  if (curl_multi_add_handle(multi_.get(), easy_.get()) != CURLM_OK) throw tovin::MemoryException(1, 1);
  open_ = true;
}

void HttpTransfer::close() noexcept {
  const PipeSignalBlock quiet;
  if (open_ && !over_) curl_multi_remove_handle(multi_.get(), easy_.get());
  open_ = false;
}

void HttpTransfer::setOptions(const Request& request) {
  CURL* easy = easy_.get();
  curl_easy_reset(easy);
  set(easy, CURLOPT_URL, request.target.url.c_str());
  set(easy, CURLOPT_PROTOCOLS_STR, "http,https");
  set(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  set(easy, CURLOPT_USERAGENT, "ztbaseclient");
  set(easy, CURLOPT_NOSIGNAL, 1L);
  // What a proxy says before the request is under way is no answer to it.
  set(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  set(easy, CURLOPT_ERRORBUFFER, errorText_);
  set(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(request.connectTimeout));
  set(easy, CURLOPT_POST, 1L);
  set(easy, CURLOPT_READFUNCTION, &onRead);
  set(easy, CURLOPT_READDATA, this);
  set(easy, CURLOPT_SEEKFUNCTION, &onRewind);
  set(easy, CURLOPT_SEEKDATA, this);
  set(easy, CURLOPT_PREREQFUNCTION, &onConnected);
  set(easy, CURLOPT_PREREQDATA, this);
  set(easy, CURLOPT_HEADERFUNCTION, &onHeader);
  set(easy, CURLOPT_HEADERDATA, this);
  set(easy, CURLOPT_WRITEFUNCTION, &onBody);
  set(easy, CURLOPT_WRITEDATA, this);
  const std::string authorities = tovin::wideToUtf8(tovin::platform::environmentVariable("SSL_CERT_FILE"));
  if (!authorities.empty()) set(easy, CURLOPT_CAINFO, authorities.c_str());
  setAuthentication(request);
  setHeaders(request);
}

// To a tunnel through the proxy curl answers the proxy's challenge before the request begins.
void HttpTransfer::setAuthentication(const Request& request) {
  CURL* easy = easy_.get();
  if (request.authentication != CURLAUTH_NONE) {
    set(easy, CURLOPT_HTTPAUTH, request.authentication);
    set(easy, CURLOPT_USERNAME, orEmpty(request.target.user));
    set(easy, CURLOPT_PASSWORD, orEmpty(request.target.password));
  }
  if (request.proxyAuthentication != CURLAUTH_NONE)
    set(easy, CURLOPT_PROXYAUTH, request.proxyAuthentication);
  else if (request.target.isSecure() && computesDigest())
    set(easy, CURLOPT_PROXYAUTH, CURLAUTH_BASIC | CURLAUTH_DIGEST);
}

void HttpTransfer::setHeaders(const Request& request) {
  headers_.reset();
  const std::string lines[] = {"Content-Type: " + request.contentType, "Transfer-Encoding: chunked",
                               request.afterContinue ? "Expect: 100-continue" : "Expect:"};
  for (const std::string& line : lines) {
    curl_slist* longer = curl_slist_append(headers_.get(), line.c_str());
    if (!longer) throw tovin::MemoryException(1, static_cast<long long>(line.size()));
    static_cast<void>(headers_.release());
    headers_.reset(longer);
  }
  set(easy_.get(), CURLOPT_HTTPHEADER, headers_.get());
}

size_t HttpTransfer::onRead(char* out, size_t one, size_t room, void* self) {
  return static_cast<HttpTransfer*>(self)->give(out, one * room);
}

size_t HttpTransfer::give(char* out, size_t room) {
  if (pendingCount_ == 0) {
    paused_ = !bodyEnded_;
    return paused_ ? CURL_READFUNC_PAUSE : 0;
  }
  const size_t count = std::min(room, pendingCount_);
  std::memcpy(out, pending_, count);
  pending_ += count;
  pendingCount_ -= count;
  taken_ += count;
  return count;
}

// Called again when curl repeats the request: too late once it has taken bytes that nobody can give it again.
int HttpTransfer::onConnected(void* self, char*, char*, int, int) {
  auto* transfer = static_cast<HttpTransfer*>(self);
  transfer->connected_ = true;
  transfer->lost_ = transfer->taken_ > 0;
  ++transfer->requests_;
  return transfer->lost_ || transfer->sentTooMany() ? CURL_PREREQFUNC_ABORT : CURL_PREREQFUNC_OK;
}

int HttpTransfer::onRewind(void* self, curl_off_t, int) {
  static_cast<HttpTransfer*>(self)->lost_ = true;
  return CURL_SEEKFUNC_FAIL;
}

size_t HttpTransfer::onHeader(char* line, size_t one, size_t count, void* self) {
  return shielded([&] {
    return static_cast<HttpTransfer*>(self)->takeHeader({line, one * count}) ? one * count : 0;
  });
}

// A status line ("HTTP/1.1 403 Forbidden") begins an answer, an empty line ends its head; "100 Continue"
// comes before the real one, and so does the challenge that curl, for Digest, asks for with an empty request.
// Curl itself would meet a refused expectation with the same expectation, for ever: false gives up.
bool HttpTransfer::takeHeader(std::string_view line) {
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
  if (line.empty()) {
    headComplete_ = status_ >= 200;
    return !refusedExpectation();
  }
  const size_t blank = line.find(' ');
  if (!line.starts_with("HTTP/") || blank == std::string_view::npos) return true;
  line.remove_prefix(blank + 1);
  status_ = 0;
  std::from_chars(line.data(), line.data() + line.size(), status_);
  reason_ = line.substr(std::min(line.find(' '), line.size()));
  body_.clear();
  headComplete_ = false;
  return true;
}

size_t HttpTransfer::onBody(char* bytes, size_t one, size_t count, void* self) {
  return shielded([&] { return static_cast<HttpTransfer*>(self)->takeBody({bytes, one * count}); });
}

size_t HttpTransfer::takeBody(std::string_view bytes) {
  const size_t count = std::min(bytes.size(), longestBody - body_.size());
  body_.append(bytes.substr(0, count));
  bodyFull_ = count < bytes.size();
  return count;
}

void HttpTransfer::push(const char* bytes, size_t count, unsigned timeout) {
  if (waiting_.size() + count <= smallPiece) {
    waiting_.insert(waiting_.end(), bytes, bytes + count);
    return;
  }
  flush(timeout);
  handOver(bytes, count, timeout);
}

void HttpTransfer::flush(unsigned timeout) {
  handOver(reinterpret_cast<const char*>(waiting_.data()), waiting_.size(), timeout);
  dropWaiting();
}

void HttpTransfer::dropWaiting() noexcept {
  tovin::wipe(waiting_.data(), waiting_.size());
  waiting_.clear();
}

void HttpTransfer::endBody(unsigned timeout) {
  const PipeSignalBlock quiet;
  flush(timeout);
  bodyEnded_ = true;
  if (!over_ && paused_) curl_easy_pause(easy_.get(), CURLPAUSE_CONT);
  paused_ = false;
}

// The time-out runs while connected: before that, curl watches the time.
void HttpTransfer::handOver(const char* bytes, size_t count, unsigned timeout) {
  if (over_ || count == 0) return;
  const PipeSignalBlock quiet;
  pending_ = bytes;
  pendingCount_ = count;
  if (paused_) curl_easy_pause(easy_.get(), CURLPAUSE_CONT);
  paused_ = false;
  const std::chrono::milliseconds patience(timeout);
  auto deadline = Clock::now() + patience;
  for (size_t before = count;; before = pendingCount_) {
    work();
    if (over_ || pendingCount_ == 0) return;
    if (pendingCount_ < before || !connected_) deadline = Clock::now() + patience;
    if (Clock::now() >= deadline) raiseTimeOut(L"The server took no data for %u ms", timeout);
    waitUntil(deadline);
  }
}

void HttpTransfer::awaitAnswer(unsigned timeout) {
  const PipeSignalBlock quiet;
  const std::chrono::milliseconds patience(timeout);
  auto deadline = Clock::now() + patience;
  for (bool begun = false;;) {
    work();
    if (over_) return;
    if (!connected_ || (headComplete_ && !begun)) deadline = Clock::now() + patience;
    begun = headComplete_;
    if (Clock::now() >= deadline) break;
    waitUntil(deadline);
  }
  if (!headComplete_) raiseTimeOut(L"The server did not answer within %u ms", timeout);
  finish(CURLE_OK);  // what is missing of the body is too late
}

void HttpTransfer::work() {
  int count = 0;
  curl_multi_perform(multi_.get(), &count);
  while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &count)) {
    if (message->msg == CURLMSG_DONE) return finish(message->data.result);
  }
}

void HttpTransfer::waitUntil(Clock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
  const auto wait = std::clamp<long long>(left, 0, watchEvery.count());
  curl_multi_poll(multi_.get(), nullptr, 0, static_cast<int>(wait), nullptr);
  if (!watch_ || Clock::now() - watched_ < watchEvery) return;
  watched_ = Clock::now();
  if (!watch_()) throw CHttpException({CHttpException::Kind::Cancelled}, L"The request was cancelled");
}

void HttpTransfer::finish(CURLcode code) {
  code_ = bodyFull_ ? CURLE_OK : code;
  over_ = true;
  curl_multi_remove_handle(multi_.get(), easy_.get());
}

bool HttpTransfer::diedUnanswered() const noexcept {
  long connections = 1;
  curl_easy_getinfo(easy_.get(), CURLINFO_NUM_CONNECTS, &connections);
  const bool died = code_ == CURLE_GOT_NOTHING || code_ == CURLE_SEND_ERROR || code_ == CURLE_RECV_ERROR ||
                    code_ == CURLE_SEND_FAIL_REWIND;
  return died && connections == 0 && status_ == 0;
}

const char* HttpTransfer::failure() const noexcept {
  if (code_ == CURLE_OK) return nullptr;
  return errorText_[0] ? errorText_ : curl_easy_strerror(code_);
}

std::string HttpTransfer::redirection() const {
  const char* url = nullptr;
  curl_easy_getinfo(easy_.get(), CURLINFO_REDIRECT_URL, &url);
  return url ? url : std::string();
}

unsigned long HttpTransfer::bestOffer(CURLINFO offers) const {
  long offered = 0;
  curl_easy_getinfo(easy_.get(), offers, &offered);
  if ((static_cast<unsigned long>(offered) & CURLAUTH_DIGEST) != 0 && computesDigest())
    return CURLAUTH_DIGEST;
  return static_cast<unsigned long>(offered) & CURLAUTH_BASIC;
}
