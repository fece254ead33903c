#pragma once

#include <string>

#include "tests/support/TempFolder.h"

namespace testsupport {

/// Certificates of servers: "good" for localhost, "wrong" for another host, both signed by an authority of
/// the test's own, and "self". Made only where there is a shell.
class Certificates {
 public:
  Certificates();

  /// The file of the authority's.
  std::string authority() const { return folder_.path("authority.pem"); }
  /// What a WebServer with one of them is configured with.
  std::string serverOf(const std::string& name) const {
    return "ssl.engine = \"enable\"\nssl.pemfile = \"" + pathOf(name + ".pem") + "\"\n";
  }

 private:
  std::string pathOf(const std::string& name) const { return shellPath(folder_.path()) + "/" + name; }
  void certify(const std::string& name, const std::string& options) const;

  TempFolder folder_;
};

}  // namespace testsupport
