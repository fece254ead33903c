#pragma once

#include <string>
#include <vector>

#include "tests/support/TempFolder.h"

namespace testsupport {

/// What a command left behind.
struct Outcome {
  int status;
  std::string out;
  std::string err;
};

/// Runs a shell line in which "ztclient" is the command that was built, in a folder of its own.
class Shell {
 public:
  Outcome run(const std::string& line) const;
  const TempFolder& folder() const { return folder_; }

 private:
  TempFolder folder_;
};

/// A service description that is real.
std::string serviceFile();

}  // namespace testsupport
