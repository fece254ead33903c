#include "ztclient/session/UploadServer.h"

#include <charconv>
#include <string_view>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "ztclient/session/UploadedForm.h"
#include "ztcore/ztCompress.h"

namespace {

constexpr std::chrono::milliseconds pulse(20);
constexpr size_t largestHead = 1 << 16;
constexpr size_t largestBody = 1 << 26;
constexpr size_t pieceSize = 1 << 16;
constexpr std::string_view lineEnd = "\r\n";

// What a connection brings, in the order of the protocol. Whatever ends early is an exception.
class Request {
 public:
  explicit Request(LoopbackListener& connection) : connection_(connection) {}

  std::string readHead() { return takeUntil("\r\n\r\n", largestHead); }

  // chunked: (size in hexadecimal digits, line end, bytes, line end)... with size 0 at the end.
  std::string readChunks(size_t& count) {
    std::string body;
    while (const size_t size = chunkSize()) {
      if (size > largestBody - body.size()) throw tovin::Exception(L"The request is too long");
      body += take(size);
      if (take(lineEnd.size()) != lineEnd) throw tovin::Exception(L"A chunk is damaged");
      ++count;
    }
    static_cast<void>(takeUntil(lineEnd, largestHead));
    return body;
  }

  std::string readCounted(std::string_view length) {
    const size_t size = numberIn(length, 10);
    if (size > largestBody) throw tovin::Exception(L"The request is too long");
    return take(size);
  }

 private:
  static size_t numberIn(std::string_view digits, int base) {
    size_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number, base);
    if (error != std::errc() || end != digits.data() + digits.size())
      throw tovin::Exception(L"A length is no number");
    return number;
  }

  size_t chunkSize() {
    const std::string line = takeUntil(lineEnd, largestHead);
    return numberIn(std::string_view(line).substr(0, line.find_first_of("; \r")), 16);
  }

  void receive() {
    const size_t before = bytes_.size();
    bytes_.resize(before + pieceSize);
    const size_t count = connection_.receive(bytes_.data() + before, pieceSize);
    bytes_.resize(before + count);
    if (count == 0) throw tovin::Exception(L"The request is cut off");
  }

  std::string take(size_t count) {
    while (bytes_.size() - at_ < count) receive();
    std::string taken = bytes_.substr(at_, count);
    at_ += count;
    if (at_ > pieceSize) {
      bytes_.erase(0, at_);
      at_ = 0;
    }
    return taken;
  }

  std::string takeUntil(std::string_view mark, size_t largest) {
    size_t end;
    while ((end = bytes_.find(mark, at_)) == std::string::npos) {
      if (bytes_.size() - at_ > largest) throw tovin::Exception(L"A line is too long");
      receive();
    }
    return take(end + mark.size() - at_);
  }

  LoopbackListener& connection_;
  std::string bytes_;
  size_t at_ = 0;
};

std::string inflated(const std::string& packed) {
  tovin::Array<unsigned char> bytes(std::vector<unsigned char>(packed.begin(), packed.end()));
  ztCompress compress(1, true);
  compress.SetLargestResult(largestBody);
  compress.Decompress(bytes, bytes);
  return {bytes.begin(), bytes.end()};
}

std::string withoutLineEnd(std::string text) {
  if (text.ends_with(lineEnd)) text.resize(text.size() - lineEnd.size());
  return text;
}

void takeFile(const FormSection& section, UploadServer::Received& received) {
  received.encoding = section.header("Content-Encoding");
  received.path = section.parameter("filename");
  received.encodedSize = section.content.size();
  received.file = received.encoding == "deflate" ? inflated(section.content) : section.content;
}

UploadServer::Received takeForm(const std::vector<FormSection>& sections) {
  UploadServer::Received received;
  bool hasFile = false;
  for (const FormSection& section : sections) {
    const std::string_view name = section.parameter("name");
    if (name == "FileName") received.fileName = withoutLineEnd(section.content);
    if (name == "SID") received.session = withoutLineEnd(section.content);
    if (name == "jobid") received.job = withoutLineEnd(section.content);
    if (name != "file") continue;
    takeFile(section, received);
    hasFile = true;
  }
  if (!hasFile) throw tovin::Exception(L"The form has no file");
  return received;
}

std::string answerOf(std::string_view status, std::string_view type, const std::string& text) {
  return "HTTP/1.1 " + std::string(status) + "\r\nContent-Type: " + std::string(type) +
         "; charset=utf-8\r\nContent-Length: " + std::to_string(text.size()) +
         "\r\nConnection: close\r\n\r\n" + text;
}

std::string refusalOf(std::string_view status, const std::string& reason) {
  return answerOf(status, "text/html", "<html><body><p>" + reason + "</p></body></html>");
}

bool asksForUpload(std::string_view head) {
  const std::string_view line = head.substr(0, head.find(lineEnd));
  const std::string_view target = line.substr(0, line.rfind(' '));
  return line.starts_with("POST ") && target.ends_with("/upload.pl");
}

UploadServer::Received readUpload(LoopbackListener& connection) {
  Request request(connection);
  const std::string head = request.readHead();
  if (!asksForUpload(head)) throw tovin::Exception(L"Only uploads are taken here");
  if (!headerIn(head, "Expect").empty()) connection.send("HTTP/1.1 100 Continue\r\n\r\n");
  size_t chunks = 0;
  const std::string_view length = headerIn(head, "Content-Length");
  const std::string body = length.empty() ? request.readChunks(chunks) : request.readCounted(length);
  UploadServer::Received received = takeForm(sectionsOf(headerIn(head, "Content-Type"), body));
  received.chunks = chunks;
  return received;
}

}  // namespace

UploadServer::UploadServer() : thread_([this] { serve(); }) {}

UploadServer::~UploadServer() {
  stopping_ = true;
  thread_.join();
}

std::string UploadServer::url() const { return "http://127.0.0.1:" + std::to_string(listener_.port()); }

std::optional<UploadServer::Received> UploadServer::received() {
  const std::lock_guard lock(mutex_);
  return std::exchange(received_, std::nullopt);
}

// Nothing that a client sends ends the server.
void UploadServer::serve() {
  while (!stopping_) {
    if (!listener_.accept(pulse)) continue;
    try {
      Received received = readUpload(listener_);
      const std::string text = std::to_string(received.file.size()) + " bytes of " + received.fileName;
      {
        const std::lock_guard lock(mutex_);
        received_ = std::move(received);
      }
      listener_.send(answerOf("200 OK", "text/plain", text));
    } catch (const tovin::Exception& e) {
      listener_.send(refusalOf("400 Bad Request", tovin::wideToUtf8(e.getMessage())));
    } catch (const std::exception& e) {
      listener_.send(refusalOf("500 Internal Server Error", e.what()));
    }
    listener_.hangUp();
  }
}
