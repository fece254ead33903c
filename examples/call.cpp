// A call of a service: what goes out, and what comes back where there is a server.
//
//     example_call jobs.wsdl [ADDRESS]
#include <iostream>

#include "ztservice/call/Client.h"

namespace {

void run(const std::string& file, const std::string& address) {
  using namespace ztservice::call;
  const ztservice::Service service = ztservice::load(file);
  Value values;
  values["jobId"] = "j7";

  const auto [port, operation] = findOperation(service, "jobStatus");
  if (!port) throw ztservice::Error({file}, "no operation jobStatus");
  if (address.empty()) {
    std::cout << makeRequest(service, *port, *operation, values).toWire();
    return;
  }
  Client client(service);
  RequestOptions options;
  options.address = address;
  const Answer answer = client.call(*port, *operation, values, options);
  if (answer.fault) throw ztservice::Error({address}, answer.fault->reason);
  const Value* state = answer.values.find("state");
  std::cout << (state ? state->text() : "unknown") << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::cerr << "usage: example_call FILE [ADDRESS]\n";
    return 2;
  }
  try {
    run(argv[1], argc == 3 ? argv[2] : "");
    return 0;
  } catch (const std::exception& e) {
    std::cerr << e.what() << '\n';
    return 1;
  }
}
