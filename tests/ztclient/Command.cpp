#include "tests/ztclient/Command.h"

#include <sys/wait.h>

#include <cstdlib>

namespace testsupport {

Outcome Shell::run(const std::string& line) const {
  const std::string script = "ztclient() { '" ZTB_COMMAND "' \"$@\"; }\ncd '" + folder_.path() + "/files'\n";
  folder_.write("files/.empty", "");
  folder_.write("script", script + line + "\n");
  const std::string out = folder_.path("out"), err = folder_.path("err");
  const int status = std::system(
      ("bash '" + folder_.path("script") + "' >'" + out + "' 2>'" + err + "' </dev/null").c_str());
  return {WEXITSTATUS(status), folder_.read("out"), folder_.read("err")};
}

std::string serviceFile() {
  return ZTB_TEST_DATA
      "/wsdl/documents/apache+axis-axis2-java-core/modules/xmlbeans/test-resources/InteropTest.wsdl";
}

}  // namespace testsupport
