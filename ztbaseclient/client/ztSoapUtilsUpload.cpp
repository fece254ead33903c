#include <optional>
#include <vector>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
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
      : http_(http), form_(form), compress_(1, true), piece_(bufferSize), packed_(bufferSize) {}

  void run() {
    do attempt();
    while (result_ == CHttp::StartAgain);
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
    return succeeded(http_.AddPostSection(name, nullptr, nullptr, nullptr)) &&
           append(tovin::wideToUtf8(value).append(lineEnd));
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
    const auto length = static_cast<uint64_t>(file.GetLength());
    uint64_t done = 0;
    while (const unsigned count = file.Read(piece_.data(), bufferSize)) {
      if (!sendPacked(count)) return false;
      done += count;
      if (form_.progress) form_.progress(done, length);
    }
    return true;
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
  const Form& form_;
  ztCompress compress_;
  std::vector<unsigned char> piece_;
  std::vector<unsigned char> packed_;
  CHttp::ResponseResult result_ = CHttp::StartAgain;
};

}  // namespace

void ztSoapUtils::UploadViaCGI(const wchar_t* filePath, const wchar_t* fileName, const wchar_t* jobId,
                               const wchar_t* sessionId, bool flag, const wchar_t* url,
                               const UploadProgress& progress, const wchar_t* sentPath) {
  std::optional<CHttp> http;
  try {
    http.emplace(1);
    const int64_t size = flag ? CHttp::Chunked : CHttp::ChunkedAfterContinue;
    Upload(*http, {filePath, fileName, jobId, sessionId, size, url, progress, sentPath ? sentPath : filePath})
        .run();
  } catch (tovin::Exception& e) {
    e.appendMessage(tovin::format(L"%ls::UploadViaCGI: Corvanta exception caught", ClassName));
    tovin::WideString reason;
    if (http) GetUploadCgiError(*http, reason);
    if (!reason.isEmpty()) throw tovin::Exception(L"Unable to upload %ls: %ls", filePath, reason);
    throw;
  } catch (...) {
    throw tovin::Exception(L"%ls::UploadViaCGI: Severe error caught", ClassName);
  }
}

void ztSoapUtils::GetUploadCgiError(CHttp& http, tovin::WideString& message) {
  message.clear();
  http.GetErrorMessageBody(message);
  message = ErrorPage::reasonIn(message.view());
}
