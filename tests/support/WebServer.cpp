#include "tests/support/WebServer.h"

#include <chrono>
#include <stdexcept>
#include <thread>

#include "ztclient/session/LoopbackListener.h"

namespace testsupport {

int freePort() { return LoopbackListener().port(); }

WebServer::WebServer(const std::string& configuration, const std::string& host)
    : host_(host), port_(freePort()) {
  if (configuration.find("ssl.engine") != std::string::npos) scheme_ = "https";
  std::filesystem::copy(ZTB_TEST_DATA "/upload/upload.pl", folder_.path("upload.pl"));
  const std::string folder = shellPath(folder_.path());
  folder_.write("lighttpd.conf",
                "server.modules = (\"mod_cgi\", \"mod_openssl\")\n"
                "server.bind = \"127.0.0.1\"\n"
                "server.port = " +
                    std::to_string(port_) + "\nserver.document-root = \"" + folder +
                    "\"\nserver.errorlog = \"" + folder + "/errors\"\nserver.upload-dirs = (\"" + folder +
                    "\")\ncgi.assign = (\".pl\" => \"/usr/bin/perl\")\n" + configuration);
  process_.emplace("/usr/sbin/lighttpd -D -f '" + folder + "/lighttpd.conf'", folder_.path());
  awaitStart();
}

// It says so when it listens. It is given no file that it would remove, which the removal of the folder could
// run into.
void WebServer::awaitStart() {
  for (int i = 0; i < 500; ++i) {
    if (folder_.read("errors").find("server started") != std::string::npos) return;
    if (process_->isOver()) throw std::runtime_error("the server did not start:\n" + folder_.read("errors"));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  throw std::runtime_error("the server does not listen");
}

}  // namespace testsupport
