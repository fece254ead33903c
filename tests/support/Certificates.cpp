#include "tests/support/Certificates.h"

namespace testsupport {

Certificates::Certificates() {
  if (!hasShell()) return;
  const std::string authorityFile = pathOf("authority.pem");
  const std::string signedBy =
      "-CA " + authorityFile + " -CAkey " + authorityFile + " -addext basicConstraints=critical,CA:FALSE ";
  certify("authority", "-addext basicConstraints=critical,CA:TRUE");
  certify("good", signedBy + "-addext subjectAltName=DNS:localhost");
  certify("wrong", signedBy + "-addext subjectAltName=DNS:other.invalid");
  certify("self", "-addext subjectAltName=DNS:localhost");
}

// Key and certificate in one file.
void Certificates::certify(const std::string& name, const std::string& options) const {
  const std::string path = pathOf(name);
  runShell("openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=" + name + " -keyout " + path +
           ".key -out " + path + ".crt " + options + " 2>/dev/null");
  runShell("cat " + path + ".key " + path + ".crt >" + path + ".pem");
}

}  // namespace testsupport
