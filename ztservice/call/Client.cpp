#include "ztservice/call/Client.h"

#include <algorithm>
#include <optional>

#include "ztservice/call/ConnectionPool.h"

namespace ztservice::call {

namespace {

std::string firstLineOf(std::string_view text) {
  constexpr size_t most = 120;
  const size_t begin = std::min(text.find_first_not_of(" \t\r\n"), text.size());
  text.remove_prefix(begin);
  text = text.substr(0, std::min(text.find_first_of("\r\n"), text.size()));
  if (text.size() <= most) return std::string(text);
  size_t end = most;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return std::string(text.substr(0, end)) + "…";
}

std::string mediaTypeOf(const std::string& contentType) {
  std::string type = contentType.substr(0, contentType.find(';'));
  std::transform(type.begin(), type.end(), type.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; });
  while (!type.empty() && type.back() == ' ') type.pop_back();
  return type;
}

bool isXml(const std::string& contentType) {
  const std::string type = mediaTypeOf(contentType);
  return type == "text/xml" || type == "application/xml" || type.ends_with("+xml");
}

}  // namespace

Client::Client(Service service, ClientOptions options)
    : service_(std::move(service)), options_(std::move(options)), pool_(std::make_unique<Pool>(options_)) {}

Client::~Client() = default;

HttpAnswer Client::send(const Request& request) {
  std::optional<Request> prepared;
  if (options_.prepare) options_.prepare(prepared.emplace(request));
  std::unique_ptr<parse::Connection> connection = pool_->take();
  HttpAnswer answer = Sending(*connection, options_, prepared ? *prepared : request).run();
  pool_->giveBack(std::move(connection));
  return answer;
}

Answer Client::read(const Port& port, const Operation& operation, const HttpAnswer& answer) const {
  const bool isSuccess = answer.status >= 200 && answer.status <= 299;
  const bool isEmpty = answer.body.find_first_not_of(" \t\r\n") == std::string::npos;
  const bool isHttp = port.protocol() == Protocol::http;
  if (isSuccess && isEmpty && (!operation.output() || answer.status == 202 || isHttp)) {
    Answer none;
    none.values = Value(Value::Object{});
    return none;
  }
  const std::string status = "the server answers " + std::to_string(answer.status);
  if (isHttp && isSuccess && !isXml(answer.contentType)) {
    Answer text;
    text.values = Value(answer.body);
    return text;
  }
  // Faults come with 500 mostly, with 400 of SOAP 1.2, and with what servers think of.
  if ((isSuccess || !isHttp) && (isXml(answer.contentType) || (isSuccess && answer.contentType.empty()))) {
    try {
      Answer read = readAnswer(service_, port, operation, answer.body, options_.answer, answer.attachments);
      if (isSuccess || read.fault) return read;
    } catch (const Error&) {
      if (isSuccess) throw;
    }
  }
  std::string text = status;
  if (isSuccess && !answer.contentType.empty()) text += " with " + mediaTypeOf(answer.contentType);
  const std::string line = firstLineOf(answer.body);
  throw Error({}, line.empty() ? text : text + ": " + line);
}

Answer Client::call(const Port& port, const Operation& operation, const Value& values,
                    const RequestOptions& options) {
  return read(port, operation, send(makeRequest(service_, port, operation, values, options)));
}

Answer Client::call(std::string_view operation, const Value& values, const RequestOptions& options) {
  const Target target = requireOperation(service_, operation);
  return call(*target.port, *target.operation, values, options);
}

}  // namespace ztservice::call
