// What goes into a call and what comes out of it. The first byte says which operation, and whether the rest
// is JSON for a request or the XML of an answer: a request, an answer or an exception is what there is.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "ztclient/input/JsonValue.h"
#include "ztservice/call/Answer.h"
#include "ztservice/call/Request.h"

using namespace ztservice::call;

namespace {

const ztservice::Service& shop() {
  static const ztservice::Service service = ztservice::load(ZTB_SHOP);
  return service;
}

void fill(const Target& target, std::string_view json) {
  const Value values = readJson(json, "json");
  RequestOptions options;
  for (const bool check : {true, false}) {
    options.check = check;
    options.mtom = !check;
    try {
      const Request request = makeRequest(shop(), *target.port, *target.operation, values, options);
      // What is sent is XML at least.
      if (target.port->protocol() != ztservice::Protocol::http)
        static_cast<void>(
            readRequest(shop(), *target.port, *target.operation, request.body, {}, request.attachments));
    } catch (const RequestError&) {
      // Values that make no request are an answer, too.
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
  const auto& ports = shop().ports();
  const ztservice::Port& port = ports[(data[0] >> 1) % ports.size()];
  const Target target{&port, &port.operations().front()};
  AnswerOptions options;
  options.limits.elements = 10'000;
  static const std::vector<MimePart> parts{{"1", "image/png", "", "", "picture", ""}};
  try {
    if (data[0] & 1)
      fill(target, rest);
    else
      static_cast<void>(readAnswer(shop(), port, *target.operation, rest, options, parts));
  } catch (const tovin::Exception&) {
    return 0;
  }
  return 0;
}
