// Calls: requests made and answers read of an order of so many items, beside the code that gSOAP makes for
// the same service, which is ours from there; and a whole call beside curl with a body that is ready.
#include <benchmark/benchmark.h>
#include <curl/curl.h>

#include <atomic>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "soapH.h"
#include "ztclient/session/LoopbackListener.h"
#include "ztservice/call/Client.h"

// The peer's library looks for this table in the program.
#pragma GCC visibility push(default)
#include "orders.nsmap"
#pragma GCC visibility pop

// The peer's server is not measured.
int o__place(soap*, char*, int, o__Item*, o__placeResponse*) { return SOAP_OK; }

namespace {

using ztservice::call::Target;
using ztservice::call::Value;

const ztservice::Service& orders() {
  static const ztservice::Service service = ztservice::load(ZTB_BENCH_ORDERS);
  return service;
}

Target place() { return ztservice::call::requireOperation(orders(), "place"); }

Value valuesOf(int items) {
  Value order;
  order["customer"] = "Ann & Bob";
  Value::List list(static_cast<size_t>(items));
  for (int i = 0; i < items; ++i) {
    Value& item = list[static_cast<size_t>(i)];
    item["sku"] = "sku-" + std::to_string(i);
    item["price"] = Value::number(std::to_string(i) + ".25");
    item["count"] = Value::number(std::to_string(i % 7));
    item["gift"] = Value(i % 2 == 0);
  }
  order["item"] = Value(std::move(list));
  return order;
}

// The same values as the structures of the peer.
struct PeerOrder {
  explicit PeerOrder(int count) : skus(static_cast<size_t>(count)), items(static_cast<size_t>(count)) {
    for (int i = 0; i < count; ++i) {
      const auto at = static_cast<size_t>(i);
      skus[at] = "sku-" + std::to_string(i);
      items[at].sku = skus[at].data();
      items[at].price = i + 0.25;
      items[at].count = i % 7;
      items[at].gift = i % 2 == 0;
    }
    order.customer = customer.data();
    order.__sizeitem = count;
    order.item = items.data();
  }

  std::string customer = "Ann & Bob";
  std::vector<std::string> skus;
  std::vector<o__Item> items;
  struct o__place order;
};

std::string peersMessage(soap& context, const struct o__place& order) {
  std::ostringstream out;
  context.os = &out;
  soap_begin(&context);
  soap_serializeheader(&context);
  soap_serialize_o__place(&context, &order);
  if (soap_begin_send(&context) || soap_envelope_begin_out(&context) || soap_putheader(&context) ||
      soap_body_begin_out(&context) || soap_put_o__place(&context, &order, "o:place", "") ||
      soap_body_end_out(&context) || soap_envelope_end_out(&context) || soap_end_send(&context))
    throw std::runtime_error("the peer cannot write");
  soap_destroy(&context);
  soap_end(&context);
  return out.str();
}

std::string answerOf(int items) {
  return makeAnswer(orders(), *place().port, *place().operation, valuesOf(items));
}

void requestsOurs(benchmark::State& state) {
  const Value values = valuesOf(static_cast<int>(state.range(0)));
  const Target target = place();
  for (auto _ : state)
    benchmark::DoNotOptimize(makeRequest(orders(), *target.port, *target.operation, values));
  state.SetItemsProcessed(state.iterations());
}

void requestsGsoap(benchmark::State& state) {
  const PeerOrder order(static_cast<int>(state.range(0)));
  soap context;
  for (auto _ : state) benchmark::DoNotOptimize(peersMessage(context, order.order));
  state.SetItemsProcessed(state.iterations());
}

void answersOurs(benchmark::State& state) {
  const std::string xml = answerOf(static_cast<int>(state.range(0)));
  const Target target = place();
  for (auto _ : state)
    benchmark::DoNotOptimize(ztservice::call::readAnswer(orders(), *target.port, *target.operation, xml));
  state.SetItemsProcessed(state.iterations());
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(xml.size()));
}

void answersGsoap(benchmark::State& state) {
  const std::string xml = answerOf(static_cast<int>(state.range(0)));
  soap context;
  for (auto _ : state) {
    std::istringstream in(xml);
    context.is = &in;
    o__placeResponse response;
    soap_default_o__placeResponse(&context, &response);
    if (soap_begin_recv(&context) || soap_envelope_begin_in(&context) || soap_recv_header(&context) ||
        soap_body_begin_in(&context) ||
        !soap_get_o__placeResponse(&context, &response, "o:placeResponse", nullptr) ||
        soap_body_end_in(&context) || soap_envelope_end_in(&context) || soap_end_recv(&context) ||
        response.__sizeitem != state.range(0))
      throw std::runtime_error("the peer cannot read");
    soap_destroy(&context);
    soap_end(&context);
  }
  state.SetItemsProcessed(state.iterations());
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(xml.size()));
}

// Answers the same to everything, over connections that stay.
class Server {
 public:
  Server() : answer_(answerOf(10)), thread_([this] { serve(); }) {
    answer_ =
        "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nContent-Length: " + std::to_string(answer_.size()) +
        "\r\n\r\n" + answer_;
  }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  ~Server() {
    ends_ = true;
    thread_.join();
  }
  std::string url() const { return "http://127.0.0.1:" + std::to_string(listener_.port()) + '/'; }

 private:
  void serve() {
    while (!ends_) {
      if (!listener_.accept(std::chrono::milliseconds(20))) continue;
      std::string bytes;
      while (takeRequest(bytes)) listener_.send(answer_);
      listener_.hangUp();
    }
  }
  bool takeRequest(std::string& bytes) {
    for (;;) {
      const size_t end = bytes.find("\r\n\r\n");
      const size_t length = bytes.find("Content-Length: ");
      if (end != bytes.npos && length < end) {
        const size_t whole = end + 4 + std::stoul(bytes.substr(length + 16));
        if (bytes.size() >= whole) {
          bytes.erase(0, whole);
          return true;
        }
      }
      char piece[1 << 14];
      const size_t count = ends_ ? 0 : listener_.receive(piece, sizeof piece);
      if (count == 0) return false;
      bytes.append(piece, count);
    }
  }

  std::string answer_;
  LoopbackListener listener_{0};
  std::atomic<bool> ends_ = false;
  std::thread thread_;
};

void callOurs(benchmark::State& state) {
  Server server;
  ztservice::call::Client client(orders());
  const Value values = valuesOf(10);
  const Target target = place();
  ztservice::call::RequestOptions options;
  options.address = server.url();
  for (auto _ : state)
    benchmark::DoNotOptimize(client.call(*target.port, *target.operation, values, options));
}

// With a request that is ready, and an answer that nobody reads.
void sendOurs(benchmark::State& state) {
  Server server;
  ztservice::call::Client client(orders());
  const Target target = place();
  auto request = makeRequest(orders(), *target.port, *target.operation, valuesOf(10));
  request.address = server.url();
  for (auto _ : state) benchmark::DoNotOptimize(client.send(request));
}

size_t append(char* bytes, size_t one, size_t count, void* out) {
  static_cast<std::string*>(out)->append(bytes, one * count);
  return one * count;
}

void callCurl(benchmark::State& state) {
  Server server;
  const Target target = place();
  const auto request = makeRequest(orders(), *target.port, *target.operation, valuesOf(10));
  CURL* const easy = curl_easy_init();
  curl_slist* headers = nullptr;
  for (const auto& [name, value] : request.headers)
    headers = curl_slist_append(headers, (name + ": " + value).c_str());
  headers = curl_slist_append(headers, "Expect:");
  std::string body;
  curl_easy_setopt(easy, CURLOPT_URL, server.url().c_str());
  curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers);
  curl_easy_setopt(easy, CURLOPT_POSTFIELDS, request.body.c_str());
  curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &append);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, &body);
  for (auto _ : state) {
    body.clear();
    if (curl_easy_perform(easy) != CURLE_OK) throw std::runtime_error("the peer cannot call");
  }
  curl_slist_free_all(headers);
  curl_easy_cleanup(easy);
}

BENCHMARK(requestsOurs)->Name("call/request/ztservice")->Arg(1)->Arg(10)->Arg(100)->Arg(10000);
BENCHMARK(requestsGsoap)->Name("call/request/gsoap")->Arg(1)->Arg(10)->Arg(100)->Arg(10000);
BENCHMARK(answersOurs)->Name("call/answer/ztservice")->Arg(1)->Arg(10)->Arg(100)->Arg(10000);
BENCHMARK(answersGsoap)->Name("call/answer/gsoap")->Arg(1)->Arg(10)->Arg(100)->Arg(10000);
BENCHMARK(callOurs)->Name("call/whole/ztservice")->UseRealTime();
BENCHMARK(sendOurs)->Name("call/send/ztservice")->UseRealTime();
BENCHMARK(callCurl)->Name("call/whole/curl")->UseRealTime();

}  // namespace
