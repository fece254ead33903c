#include "ztclient/session/HttpReader.h"

#include <charconv>

#include "tovinCore/Exception.h"
#include "ztservice/call/Multipart.h"

using ztservice::call::headerIn;

namespace {

constexpr size_t pieceSize = 1 << 16;
constexpr std::string_view lineEnd = "\r\n";

size_t numberIn(std::string_view digits, int base) {
  size_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number, base);
  if (error != std::errc() || end != digits.data() + digits.size())
    throw tovin::Exception(L"A length is no number");
  return number;
}

}  // namespace

std::string HttpReader::readHead() { return takeUntil("\r\n\r\n", largestHead); }

std::string HttpReader::readBody(std::string_view head, size_t& chunks) {
  const std::string length = headerIn(head, "Content-Length");
  const bool isChunked = !headerIn(head, "Transfer-Encoding").empty();
  if (length.empty() && !isChunked) return {};
  if (!headerIn(head, "Expect").empty()) connection_.send("HTTP/1.1 100 Continue\r\n\r\n");
  return isChunked ? readChunks(chunks) : readCounted(length);
}

// chunked: (size in hexadecimal digits, line end, bytes, line end)... with size 0 at the end.
std::string HttpReader::readChunks(size_t& count) {
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

std::string HttpReader::readCounted(std::string_view length) {
  const size_t size = numberIn(length, 10);
  if (size > largestBody) throw tovin::Exception(L"The request is too long");
  return take(size);
}

size_t HttpReader::chunkSize() {
  const std::string line = takeUntil(lineEnd, largestHead);
  return numberIn(std::string_view(line).substr(0, line.find_first_of("; \r")), 16);
}

void HttpReader::receive() {
  const size_t before = bytes_.size();
  bytes_.resize(before + pieceSize);
  const size_t count = connection_.receive(bytes_.data() + before, pieceSize);
  bytes_.resize(before + count);
  if (count == 0) throw tovin::Exception(L"The request is cut off");
}

std::string HttpReader::take(size_t count) {
  while (bytes_.size() - at_ < count) receive();
  std::string taken = bytes_.substr(at_, count);
  at_ += count;
  if (at_ > pieceSize) {
    bytes_.erase(0, at_);
    at_ = 0;
  }
  return taken;
}

std::string HttpReader::takeUntil(std::string_view mark, size_t largest) {
  size_t end;
  while ((end = bytes_.find(mark, at_)) == std::string::npos) {
    if (bytes_.size() - at_ > largest) throw tovin::Exception(L"A line is too long");
    receive();
  }
  return take(end + mark.size() - at_);
}

std::string httpAnswer(std::string_view status, std::string_view type, const std::string& text) {
  return "HTTP/1.1 " + std::string(status) + "\r\nContent-Type: " + std::string(type) +
         "; charset=utf-8\r\nContent-Length: " + std::to_string(text.size()) +
         "\r\nConnection: close\r\n\r\n" + text;
}
