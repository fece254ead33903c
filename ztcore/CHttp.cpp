#include "ztcore/CHttp.h"

#include <algorithm>
#include <random>
#include <string>
#include <utility>

#include "tovinCore/Exception.h"
#include "tovinCore/Guard.h"
#include "tovinCore/Utf8.h"
#include "ztcore/HttpTransfer.h"

using tovin::guarded;

namespace {

constexpr const char* ClassName = "CHttp";
constexpr unsigned defaultTimeout = 30000;
constexpr int mostRestarts = 5;
using Kind = CHttpException::Kind;

// Long and random enough to be in no body.
std::string makeBoundary() {
  std::random_device random;
  std::string boundary = "----------------------------";
  for (int i = 0; i < 4; ++i) {
    for (uint32_t bits = random(), digit = 0; digit < 8; ++digit, bits >>= 4) {
      boundary += "0123456789abcdef"[bits & 15];
    }
  }
  return boundary;
}

std::string escaped(const char* text) {
  std::string out;
  for (; *text; ++text) {
    switch (*text) {
      case '"':
        out += "%22";
        break;
      case '\r':
        out += "%0D";
        break;
      case '\n':
        out += "%0A";
        break;
      default:
        out += *text;
    }
  }
  return out;
}

// What kind of failure libcurl means.
Kind kindOf(CURLcode code) {
  switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return Kind::Name;
    case CURLE_OPERATION_TIMEDOUT:
      return Kind::TimeOut;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_ENGINE_SETFAILED:
    case CURLE_SSL_ENGINE_INITFAILED:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_SHUTDOWN_FAILED:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_CLIENTCERT:
    case CURLE_USE_SSL_FAILED:
      return Kind::Tls;
    default:
      return Kind::Connection;
  }
}

bool isSuccess(long status) { return status >= 200 && status < 300; }
bool keepsMethod(long status) { return status == 307 || status == 308; }

std::wstring fromEightBit(const std::string& bytes) {
  std::wstring text;
  for (char c : bytes) text += static_cast<wchar_t>(static_cast<unsigned char>(c));
  return text;
}

}  // namespace

// The requests of one client: what the next one must do otherwise, and what the last one came to.
class CHttp::Transfer {
 public:
  explicit Transfer(int connections) : http_(connections) {}

  void open(const wchar_t* url, int64_t size);
  ResponseResult push(const std::string& bytes) { return push(bytes.data(), bytes.size()); }
  ResponseResult push(const char* bytes, size_t count);
  ResponseResult end();
  ResponseResult await(unsigned timeout);
  const std::string& boundary() const { return boundary_; }
  const std::string& answer() const { return http_.body(); }

  void setWatch(std::function<bool()> watch) { http_.setWatch(std::move(watch)); }

  unsigned connectTimeout = defaultTimeout;
  unsigned sendTimeout = defaultTimeout;

 private:
  void begin(const wchar_t* url);
  template <class Step>
  ResponseResult step(Step&& step);
  ResponseResult judge();
  ResponseResult judgeAnswer();
  ResponseResult startAgain();
  ResponseResult followRedirection();
  HttpTarget redirectedTarget() const;
  bool canAnswerChallenge() const;
  bool canAnswerProxyChallenge() const;
  [[noreturn]] void raise(Kind kind, const std::wstring& message) const;
  [[noreturn]] void refuseAgain() const;

  HttpTransfer http_;
  std::string boundary_;
  // As the caller gave it, credentials and all.
  tovin::SecretString<wchar_t> url_;
  HttpTarget target_;
  // What a request found out on its way: where it is led, and how it is let in. The next one begins anew.
  unsigned long authentication_ = CURLAUTH_NONE;
  unsigned long proxyAuthentication_ = CURLAUTH_NONE;
  bool expects_ = true;
  bool again_ = false;
  int requests_ = 0;
};

void CHttp::Transfer::open(const wchar_t* url, int64_t size) {
  if (size != Chunked && size != ChunkedAfterContinue) {
    throw tovin::Exception(L"A body's size is -1 or -2, not %lld", size);
  }
  http_.close();
  const bool goesOn = std::exchange(again_, false) && url_.text().view() == (url ? url : L"");
  if (!goesOn) begin(url);
  boundary_ = makeBoundary();
  http_.open({target_, authentication_, proxyAuthentication_, "multipart/form-data; boundary=" + boundary_,
              size == ChunkedAfterContinue && expects_, connectTimeout, 1 + mostRestarts - requests_});
}

void CHttp::Transfer::begin(const wchar_t* url) {
  target_ = HttpTarget::parse(url);
  url_ = tovin::SecretString<wchar_t>(url ? url : L"");
  authentication_ = proxyAuthentication_ = CURLAUTH_NONE;
  expects_ = true;
  requests_ = 0;
}

// A request that failed is closed: its caller begins anew or gives up.
template <class Step>
CHttp::ResponseResult CHttp::Transfer::step(Step&& step) {
  if (!http_.isOpen()) throw tovin::Exception(L"No request is open");
  try {
    step();
    return http_.isOver() ? judge() : Success;
  } catch (...) {
    http_.close();
    throw;
  }
}

CHttp::ResponseResult CHttp::Transfer::push(const char* bytes, size_t count) {
  return step([&] { http_.push(bytes, count, sendTimeout); });
}

CHttp::ResponseResult CHttp::Transfer::end() {
  return step([&] { http_.endBody(sendTimeout); });
}

CHttp::ResponseResult CHttp::Transfer::await(unsigned timeout) {
  return step([&] { http_.awaitAnswer(timeout); });
}

CHttp::ResponseResult CHttp::Transfer::judge() {
  if (http_.sentTooMany()) refuseAgain();
  if (http_.refusedExpectation()) {
    expects_ = false;
    return startAgain();
  }
  if (http_.wasLost() || http_.diedUnanswered()) return startAgain();
  const bool answered = http_.status() >= 300 && http_.hasWholeHead();
  if (http_.failure() && !answered) {
    const std::wstring words = withoutUserInfo(tovin::utf8ToWide(http_.failure()));
    raise(kindOf(http_.failureCode()),
          tovin::format(L"The request to %hs failed: %ls", target_.url.c_str(), words.c_str()));
  }
  if (!http_.hasWholeHead()) {
    raise(Kind::Connection,
          tovin::format(L"The request to %hs failed: the answer ends in its head", target_.url.c_str()));
  }
  return judgeAnswer();
}

CHttp::ResponseResult CHttp::Transfer::judgeAnswer() {
  const long status = http_.status();
  if (keepsMethod(status) && !http_.redirection().empty()) return followRedirection();
  if (canAnswerChallenge()) {
    authentication_ = http_.challenge();
    return startAgain();
  }
  if (canAnswerProxyChallenge()) {
    proxyAuthentication_ = CURLAUTH_DIGEST;
    return startAgain();
  }
  if (!isSuccess(status)) {
    raise(Kind::Status, tovin::format(L"The server answered %ld%hs", status, http_.reason().c_str()));
  }
  if (!http_.isComplete()) {
    raise(Kind::Status, tovin::format(L"The server answered %ld%hs before it had the whole form", status,
                                      http_.reason().c_str()));
  }
  return Success;
}

bool CHttp::Transfer::canAnswerChallenge() const {
  return http_.status() == 401 && target_.hasCredentials() && authentication_ == CURLAUTH_NONE &&
         http_.challenge() != CURLAUTH_NONE;
}

// A proxy that takes Basic has had it already.
bool CHttp::Transfer::canAnswerProxyChallenge() const {
  return http_.status() == 407 && proxyAuthentication_ == CURLAUTH_NONE &&
         http_.proxyChallenge() == CURLAUTH_DIGEST;
}

CHttp::ResponseResult CHttp::Transfer::startAgain() {
  http_.close();
  requests_ += std::max(http_.requests(), 1);
  if (requests_ > mostRestarts) refuseAgain();
  again_ = true;
  return StartAgain;
}

void CHttp::Transfer::refuseAgain() const {
  raise(Kind::Redirection, tovin::format(L"The request to %hs was to be sent again more than %d times",
                                         target_.url.c_str(), mostRestarts));
}

HttpTarget CHttp::Transfer::redirectedTarget() const {
  try {
    return HttpTarget::parse(tovin::utf8ToWide(http_.redirection()).c_str());
  } catch (const tovin::MemoryException&) {
    throw;
  } catch (const tovin::Exception& e) {
    raise(Kind::Redirection, e.getMessage());
  }
}

// Credentials are for the server they were given for.
CHttp::ResponseResult CHttp::Transfer::followRedirection() {
  HttpTarget next = redirectedTarget();
  if (target_.isSecure() && !next.isSecure()) {
    raise(Kind::Redirection, tovin::format(L"The server redirects from HTTPS to %hs", next.url.c_str()));
  }
  const bool sameServer = next.origin() == target_.origin();
  next.user = sameServer ? target_.user : tovin::SecretString<char>();
  next.password = sameServer ? target_.password : tovin::SecretString<char>();
  if (!sameServer) authentication_ = CURLAUTH_NONE;
  target_ = std::move(next);
  return startAgain();
}

void CHttp::Transfer::raise(Kind kind, const std::wstring& message) const {
  const bool cut = http_.failure() && kind != Kind::Status;
  throw CHttpException({kind, http_.status(), cut ? static_cast<int>(http_.failureCode()) : 0}, message);
}

CHttp::CHttp(int connections) {
  guarded({ClassName, "CHttp"}, [&] { transfer_ = std::make_unique<Transfer>(connections); });
}

CHttp::~CHttp() = default;

void CHttp::SetTimeouts(unsigned connecting, unsigned sending) {
  transfer_->connectTimeout = connecting;
  transfer_->sendTimeout = sending;
}

void CHttp::SetWatch(std::function<bool()> watch) {
  guarded({ClassName, "SetWatch"}, [&] { transfer_->setWatch(std::move(watch)); });
}

CHttp::ResponseResult CHttp::OpenConnect(const wchar_t* url, int verb, int64_t size, int formDataType) {
  return guarded({ClassName, "OpenConnect"}, [&] {
    if (verb != Post) throw tovin::Exception(L"Unknown HTTP verb %d", verb);
    if (formDataType != MultipartForm) throw tovin::Exception(L"Unknown type of form data %d", formDataType);
    transfer_->open(url, size);
    return Success;
  });
}

CHttp::ResponseResult CHttp::AddPostSection(const char* name, const char* contentType, const char* fileName,
                                            const char* encoding) {
  return guarded({ClassName, "AddPostSection"}, [&] {
    std::string header = "--" + transfer_->boundary() + "\r\nContent-Disposition: form-data";
    if (name) header += "; name=\"" + escaped(name) + "\"";
    if (fileName) header += "; filename=\"" + escaped(fileName) + "\"";
    if (contentType) header += "\r\nContent-Type: " + escaped(contentType);
    if (encoding) header += "\r\nContent-Encoding: " + escaped(encoding);
    return transfer_->push(header + "\r\n\r\n");
  });
}

CHttp::ResponseResult CHttp::AppendData(const void* bytes, size_t count) {
  return guarded({ClassName, "AppendData"}, [&] {
    if (!bytes && count > 0) throw tovin::Exception(L"No data to append");
    return transfer_->push(static_cast<const char*>(bytes), count);
  });
}

CHttp::ResponseResult CHttp::EndPostSection() {
  return guarded({ClassName, "EndPostSection"}, [&] {
    const ResponseResult result = transfer_->push("--" + transfer_->boundary() + "--\r\n");
    return result == Success ? transfer_->end() : result;
  });
}

CHttp::ResponseResult CHttp::CheckResponseHeader(unsigned timeout) {
  return guarded({ClassName, "CheckResponseHeader"}, [&] { return transfer_->await(timeout); });
}

CHttp::ResponseResult CHttp::GetErrorMessageBody(tovin::WideString& body) const {
  return guarded({ClassName, "GetErrorMessageBody"}, [&] {
    const std::string& bytes = transfer_->answer();
    bool cutShort = false;
    const bool utf8 = tovin::isValidUtf8(bytes, cutShort);
    body = utf8 ? tovin::utf8ToWide(bytes) : fromEightBit(bytes);
    return Success;
  });
}
