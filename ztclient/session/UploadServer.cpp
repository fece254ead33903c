#include "ztclient/session/UploadServer.h"

#include <string_view>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "ztclient/session/HttpReader.h"
#include "ztclient/session/UploadedForm.h"
#include "ztcore/ztCompress.h"
#include "ztservice/call/Multipart.h"

namespace {

constexpr std::chrono::milliseconds pulse(20);
constexpr std::string_view lineEnd = "\r\n";

std::string inflated(const std::string& packed) {
  tovin::Array<unsigned char> bytes(std::vector<unsigned char>(packed.begin(), packed.end()));
  ztCompress compress(1, true);
  compress.SetLargestResult(HttpReader::largestBody);
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
    const std::string name = section.parameter("name");
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

std::string refusalOf(std::string_view status, const std::string& reason) {
  return httpAnswer(status, "text/html", "<html><body><p>" + reason + "</p></body></html>");
}

bool asksForUpload(std::string_view head) {
  const std::string_view line = head.substr(0, head.find(lineEnd));
  const std::string_view target = line.substr(0, line.rfind(' '));
  return line.starts_with("POST ") && target.ends_with("/upload.pl");
}

UploadServer::Received readUpload(LoopbackListener& connection) {
  HttpReader reader(connection);
  const std::string head = reader.readHead();
  if (!asksForUpload(head)) throw tovin::Exception(L"Only uploads are taken here");
  size_t chunks = 0;
  const std::string body = reader.readBody(head, chunks);
  UploadServer::Received received =
      takeForm(sectionsOf(ztservice::call::headerIn(head, "Content-Type"), body));
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
      listener_.send(httpAnswer("200 OK", "text/plain", text));
    } catch (const tovin::Exception& e) {
      listener_.send(refusalOf("400 Bad Request", tovin::wideToUtf8(e.getMessage())));
    } catch (const std::exception& e) {
      listener_.send(refusalOf("500 Internal Server Error", e.what()));
    }
    listener_.hangUp();
  }
}
