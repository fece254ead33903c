#include <exception>
#include <optional>
#include <vector>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/Wipe.h"
#include "ztbaseclient/client/ErrorPage.h"
#include "ztbaseclient/client/ztSoapUtils.h"
#include "ztcore/CHttp.h"
#include "ztcore/ztCompress.h"
#include "ztcore/ztFile.h"

namespace {

constexpr const wchar_t* ClassName = L"ztSoapUtils";
constexpr unsigned bufferSize = 0x20000;
constexpr unsigned answerTimeout = 30000;
constexpr std::string_view lineEnd = "\r\n";

struct Form {
  const wchar_t* filePath;
  const wchar_t* fileName;
  const wchar_t* jobId;
  const wchar_t* sessionId;
  int64_t size;
  const wchar_t* url;
  const ztSoapUtils::UploadProgress& progress;
  const wchar_t* sentPath;
};

// The file is read and compressed piece by piece, straight into the request's body. Each step says whether
// the next may follow; result_ says why not.
class Upload {
 public:
  Upload(CHttp& http, const Form& form)
      : http_(http), form_(form), compress_(1, true), piece_(bufferSize), packed_(bufferSize) {
    if (form_.progress) http_.SetWatch([this] { return report(); });
  }

  void run() {
    do attempt();
    while (result_ == CHttp::StartAgain);
  }

  // What the progress function threw: it ended the upload, and is no failure of it.
  void rethrowThrown() const {
    if (thrown_) std::rethrow_exception(thrown_);
  }

 private:
  bool succeeded(CHttp::ResponseResult result) {
    result_ = result;
    return result == CHttp::Success;
  }

  void attempt() {
    static_cast<void>(begin() && sendFile() && append(lineEnd) && succeeded(http_.EndPostSection()) &&
                      succeeded(http_.CheckResponseHeader(answerTimeout)));
  }

  bool begin() {
    return succeeded(http_.OpenConnect(form_.url, CHttp::Post, form_.size, CHttp::MultipartForm)) &&
           sendField("FileName", form_.fileName) && sendField("SID", form_.sessionId) &&
           (!form_.jobId || sendField("jobid", form_.jobId));
  }

  bool sendField(const char* name, const wchar_t* value) {
    const std::wstring_view text(value ? value : L"");
    tovin::SecretBytes bytes(tovin::utf8Length(text));  // a session id is as good as a password
    tovin::wideToUtf8(text, reinterpret_cast<char*>(bytes.data()));
    return succeeded(http_.AddPostSection(name, nullptr, nullptr, nullptr)) &&
           succeeded(http_.AppendData(bytes.data(), bytes.size())) && append(lineEnd);
  }

  bool append(std::string_view bytes) { return succeeded(http_.AppendData(bytes.data(), bytes.size())); }

  bool sendFile() {
    const std::string path = tovin::wideToUtf8(form_.sentPath);
    if (!succeeded(http_.AddPostSection("file", "application/octet-stream", path.c_str(), "deflate")))
      return false;
    compress_.Reset();
    ztFile file;
    if (!file.Open(form_.filePath, ztFile::ForReading)) {
      throw ztFile::OpenFailure(L"Unable to open file %ls", form_.filePath);
    }
    return sendPieces(file) && sendPacked(0);
  }

  bool sendPieces(ztFile& file) {
    length_ = static_cast<uint64_t>(file.GetLength());
    done_ = 0;
    while (const unsigned count = file.Read(piece_.data(), bufferSize)) {
      if (!sendPacked(count)) return false;
      done_ += count;
      if (form_.progress && !report()) {
        throw CHttpException({CHttpException::Kind::Cancelled}, L"The request was cancelled");
      }
    }
    return true;
  }

  bool report() noexcept {
    try {
      return form_.progress(done_, length_);
    } catch (...) {
      thrown_ = std::current_exception();
      return false;
    }
  }

  // Compresses so many bytes of the piece, none for the end of the stream, and appends what comes of it.
  bool sendPacked(size_t count) {
    for (bool more = true; more;) {
      size_t produced = 0;
      more = compress_.CompressStream(count > 0 ? piece_.data() : nullptr, count, packed_.data(), bufferSize,
                                      produced) == 1;
      if (produced > 0 && !succeeded(http_.AppendData(packed_.data(), produced))) return false;
    }
    return true;
  }

  CHttp& http_;
  const Form form_;
  ztCompress compress_;
  std::vector<unsigned char> piece_;
  std::vector<unsigned char> packed_;
  uint64_t done_ = 0;
  uint64_t length_ = 0;
  std::exception_ptr thrown_;
  CHttp::ResponseResult result_ = CHttp::StartAgain;
};

// The reason that the server gives takes the place of the message; what kind of failure it was stays.
[[noreturn]] void rethrowWithReason(const tovin::Exception& failure, const wchar_t* filePath,
                                    const tovin::WideString& reason) {
  if (reason.isEmpty()) throw;
  const std::wstring message = tovin::format(L"Unable to upload %ls: %ls", filePath, reason);
  if (const auto* http = dynamic_cast<const CHttpException*>(&failure)) {
    throw CHttpException(http->getOutcome(), message);
  }
  throw tovin::Exception(message.c_str());
}

}  // namespace

void ztSoapUtils::UploadViaCGI(const wchar_t* filePath, const wchar_t* fileName, const wchar_t* jobId,
                               const wchar_t* sessionId, bool flag, const wchar_t* url,
                               const UploadProgress& progress, const wchar_t* sentPath) {
  std::optional<CHttp> http;
  std::optional<Upload> upload;
  try {
    http.emplace(1);
    const int64_t size = flag ? CHttp::Chunked : CHttp::ChunkedAfterContinue;
    upload.emplace(*http, Form{filePath, fileName, jobId, sessionId, size, url, progress,
                               sentPath ? sentPath : filePath});
    upload->run();
  } catch (tovin::Exception& e) {
    if (upload) upload->rethrowThrown();
    e.appendMessage(tovin::format(L"%ls::UploadViaCGI: Corvanta exception caught", ClassName));
    tovin::WideString reason;
    if (http) GetUploadCgiError(*http, reason);
    rethrowWithReason(e, filePath, reason);
  } catch (...) {
    throw tovin::Exception(L"%ls::UploadViaCGI: Severe error caught", ClassName);
  }
}

void ztSoapUtils::GetUploadCgiError(CHttp& http, tovin::WideString& message) {
  message.clear();
  http.GetErrorMessageBody(message);
  message = ErrorPage::reasonIn(message.view());
}
