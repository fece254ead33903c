#include "ztcore/CHttp.h"

#include <random>
#include <string>

#include "tovinCore/Exception.h"
#include "tovinCore/Guard.h"
#include "tovinCore/Utf8.h"
#include "ztcore/HttpTransfer.h"

using tovin::guarded;

namespace {

constexpr const char* ClassName = "CHttp";
constexpr unsigned defaultTimeout = 30000;
constexpr int mostRestarts = 5;

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

  unsigned connectTimeout = defaultTimeout;
  unsigned sendTimeout = defaultTimeout;

 private:
  template <class Step>
  ResponseResult step(Step&& step);
  ResponseResult judge();
  ResponseResult judgeAnswer();
  ResponseResult startAgain();
  ResponseResult followRedirection();
  bool canAnswerChallenge() const;
  [[noreturn]] void refuse() const;

  HttpTransfer http_;
  std::string boundary_;
  std::wstring url_;
  HttpTarget target_;
  unsigned long authentication_ = CURLAUTH_NONE;
  int restarts_ = 0;
};

void CHttp::Transfer::open(const wchar_t* url, int64_t size) {
  if (size != Chunked && size != ChunkedAfterContinue) {
    throw tovin::Exception(L"A body's size is -1 or -2, not %lld", size);
  }
  http_.close();
  if (target_.url.empty() || url_ != (url ? url : L"")) {
    target_ = HttpTarget::parse(url);
    url_ = url;
    authentication_ = CURLAUTH_NONE;
    restarts_ = 0;
  }
  boundary_ = makeBoundary();
  http_.open({target_, authentication_, "multipart/form-data; boundary=" + boundary_,
              size == ChunkedAfterContinue, connectTimeout});
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
  if (http_.wasLost() || http_.diedUnanswered()) return startAgain();
  const bool answered = http_.status() >= 300;
  if (http_.failure() && !answered) {
    throw tovin::Exception(L"The request to %hs failed: %hs", target_.url, http_.failure());
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
  if (!isSuccess(status)) refuse();
  if (!http_.isComplete()) {
    throw tovin::Exception(L"The server answered %ld%hs before it had the whole form", status,
                           http_.reason());
  }
  restarts_ = 0;
  return Success;
}

bool CHttp::Transfer::canAnswerChallenge() const {
  const bool hasCredentials = !target_.user.empty() || !target_.password.empty();
  return http_.status() == 401 && hasCredentials && authentication_ == CURLAUTH_NONE &&
         http_.challenge() != CURLAUTH_NONE;
}

CHttp::ResponseResult CHttp::Transfer::startAgain() {
  http_.close();
  if (restarts_++ == mostRestarts) {
    throw tovin::Exception(L"The request to %hs was to be sent again more than %d times", target_.url,
                           mostRestarts);
  }
  return StartAgain;
}

// Credentials are for the server they were given for.
CHttp::ResponseResult CHttp::Transfer::followRedirection() {
  HttpTarget next = HttpTarget::parse(tovin::utf8ToWide(http_.redirection()).c_str());
  if (target_.isSecure() && !next.isSecure()) {
    throw tovin::Exception(L"The server redirects from HTTPS to %hs", next.url);
  }
  const bool sameServer = next.origin() == target_.origin();
  next.user = sameServer ? target_.user : std::string();
  next.password = sameServer ? target_.password : std::string();
  if (!sameServer) authentication_ = CURLAUTH_NONE;
  target_ = next;
  return startAgain();
}

void CHttp::Transfer::refuse() const {
  throw tovin::Exception(L"The server answered %ld%hs", http_.status(), http_.reason());
}

CHttp::CHttp(int connections) {
  guarded({ClassName, "CHttp"}, [&] { transfer_ = std::make_unique<Transfer>(connections); });
}

CHttp::~CHttp() = default;

void CHttp::SetTimeouts(unsigned connecting, unsigned sending) {
  transfer_->connectTimeout = connecting;
  transfer_->sendTimeout = sending;
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
