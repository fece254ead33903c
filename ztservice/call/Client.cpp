#include "ztservice/call/Client.h"

#include <algorithm>
#include <mutex>
#include <thread>
#include <vector>

#include "ztservice/load/Connection.h"
#include "ztservice/load/Location.h"

namespace ztservice::call {

namespace {

using parse::Connection;

bool startsWithFolded(std::string_view text, std::string_view lower) {
  if (text.size() < lower.size()) return false;
  return std::equal(lower.begin(), lower.end(), text.begin(), [](char a, char b) {
    return a == (b >= 'A' && b <= 'Z' ? static_cast<char>(b + ('a' - 'A')) : b);
  });
}

// A header without what authorizes: its name stays.
std::string withoutSecrets(std::string_view line) {
  for (const std::string_view name : {"authorization:", "proxy-authorization:", "cookie:", "set-cookie:"}) {
    if (startsWithFolded(line, name)) return std::string(line.substr(0, name.size())) + " (hidden)\r\n";
  }
  return std::string(line);
}

void traceLines(const ClientOptions& options, char direction, std::string_view text) {
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    options.trace(direction, withoutSecrets(text.substr(0, end)));
    text.remove_prefix(end);
  }
}

int onTrace(CURL*, curl_infotype kind, char* bytes, size_t size, void* data) {
  const ClientOptions& options = *static_cast<const ClientOptions*>(data);
  // No exception may pass through curl.
  try {
    if (kind == CURLINFO_HEADER_OUT) traceLines(options, '>', {bytes, size});
    if (kind == CURLINFO_HEADER_IN) traceLines(options, '<', {bytes, size});
    if (kind == CURLINFO_DATA_OUT) options.trace('>', {bytes, size});
    if (kind == CURLINFO_DATA_IN) options.trace('<', {bytes, size});
  } catch (...) {
    return 0;
  }
  return 0;
}

// The headers of one request, as long as it is on its way.
class HeaderList {
 public:
  void add(const std::string& line) {
    curl_slist* longer = curl_slist_append(list_, line.c_str());
    if (!longer) throw std::bad_alloc();
    list_ = longer;
  }
  curl_slist* get() const noexcept { return list_; }
  HeaderList() = default;
  HeaderList(const HeaderList&) = delete;
  HeaderList& operator=(const HeaderList&) = delete;
  ~HeaderList() { curl_slist_free_all(list_); }

 private:
  curl_slist* list_ = nullptr;
};

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

// Connections that nobody uses at the moment.
class Client::Pool {
 public:
  explicit Pool(const ClientOptions& options) : options_(options) {}

  std::unique_ptr<Connection> take() {
    {
      const std::lock_guard guard(lock_);
      if (!idle_.empty()) {
        std::unique_ptr<Connection> last = std::move(idle_.back());
        idle_.pop_back();
        return last;
      }
    }
    return make();
  }

  void giveBack(std::unique_ptr<Connection> connection) {
    const std::lock_guard guard(lock_);
    idle_.push_back(std::move(connection));
  }

 private:
  std::unique_ptr<Connection> make() const {
    auto connection =
        std::make_unique<Connection>(options_.connecting, options_.transfer, options_.authorities);
    connection->set(CURLOPT_COOKIEFILE, "");
    connection->set(CURLOPT_PATH_AS_IS, 1L);
    if (!options_.certificate.empty()) connection->set(CURLOPT_SSLCERT, options_.certificate.c_str());
    if (!options_.key.empty()) connection->set(CURLOPT_SSLKEY, options_.key.c_str());
    if (!options_.proxy.empty()) connection->set(CURLOPT_PROXY, options_.proxy.c_str());
    if (options_.trace) {
      connection->set(CURLOPT_DEBUGFUNCTION, &onTrace);
      connection->set(CURLOPT_DEBUGDATA, const_cast<ClientOptions*>(&options_));
      connection->set(CURLOPT_VERBOSE, 1L);
    }
    return connection;
  }

  const ClientOptions& options_;
  std::mutex lock_;
  std::vector<std::unique_ptr<Connection>> idle_;
};

Client::Client(Service service, ClientOptions options)
    : service_(std::move(service)), options_(std::move(options)), pool_(std::make_unique<Pool>(options_)) {}

Client::~Client() = default;

namespace {

// One request on one connection, to where it is redirected and until it can be made.
class Sending {
 public:
  Sending(Connection& connection, const ClientOptions& options, const Request& request)
      : connection_(connection), options_(options), request_(request) {}

  HttpAnswer run() {
    constexpr int mostRedirections = 5;
    std::string at = request_.address;
    for (int redirections = 0;; ++redirections) {
      const long status = perform(at);
      if (connection_.isTooLong())
        fail(at, "more than the " + std::to_string(options_.answer.limits.bytes) + " bytes that are allowed");
      if (status == 0) fail(at, connection_.failure());
      const std::string to = connection_.redirection();
      if (to.empty()) return {status, connection_.contentType(), std::move(connection_.body())};
      if (redirections == mostRedirections)
        fail(at, "more than " + std::to_string(mostRedirections) + " redirections");
      at = redirected(at, to, status);
    }
  }

 private:
  [[noreturn]] static void fail(const std::string& at, const std::string& text) {
    throw Error({parse::location::shown(at)}, text);
  }

  std::string redirected(const std::string& from, const std::string& to, long status) const {
    using namespace parse::location;
    const std::string where = shown(to);
    if (!isWeb(to)) fail(from, "redirects to " + where + ", which is neither HTTP nor HTTPS");
    if (schemeOf(from) == "https" && schemeOf(to) == "http")
      fail(from, "redirects to " + where + ", which is not encrypted");
    if (status == 303 && request_.method != "GET")
      fail(from, "redirects to " + where + ", which would have to be read without the request");
    if (originOf(from) != originOf(to) && !options_.redirectsAnywhere)
      fail(from, "redirects to " + where + ", which is another server");
    return to;
  }

  long perform(const std::string& at) {
    HeaderList headers;
    for (const auto& [name, value] : request_.headers)
      headers.add(value.empty() ? name + ';' : name + ": " + value);
    headers.add("Expect:");
    const bool isSameServer = parse::location::originOf(at) == parse::location::originOf(request_.address);
    if (isSameServer && !options_.bearer.empty()) headers.add("Authorization: Bearer " + options_.bearer);
    connection_.set(CURLOPT_HTTPHEADER, headers.get());
    connection_.set(CURLOPT_USERPWD,
                    isSameServer && !options_.user.empty() ? options_.user.c_str() : nullptr);
    connection_.set(CURLOPT_HTTPAUTH, CURLAUTH_BASIC | CURLAUTH_DIGEST);
    if (request_.method == "GET") {
      connection_.set(CURLOPT_HTTPGET, 1L);
    } else {
      connection_.set(CURLOPT_POST, 1L);
      connection_.set(CURLOPT_POSTFIELDS, request_.body.c_str());
      connection_.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.body.size()));
    }
    connection_.set(CURLOPT_CUSTOMREQUEST, request_.method == "GET" || request_.method == "POST"
                                               ? nullptr
                                               : request_.method.c_str());
    long status = connection_.perform(at, options_.answer.limits.bytes);
    for (unsigned tries = 0; status == 0 && tries < options_.retries && wasNotSent(); ++tries) {
      std::this_thread::sleep_for(std::chrono::milliseconds(100) * (1U << std::min(tries, 6U)));
      status = connection_.perform(at, options_.answer.limits.bytes);
    }
    connection_.set(CURLOPT_HTTPHEADER, nullptr);
    return status;
  }

  bool wasNotSent() const {
    return connection_.code() == CURLE_COULDNT_CONNECT || connection_.code() == CURLE_COULDNT_RESOLVE_HOST;
  }

  Connection& connection_;
  const ClientOptions& options_;
  const Request& request_;
};

}  // namespace

HttpAnswer Client::send(const Request& request) {
  std::unique_ptr<Connection> connection = pool_->take();
  HttpAnswer answer = Sending(*connection, options_, request).run();
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
      Answer read = readAnswer(service_, port, operation, answer.body, options_.answer);
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
