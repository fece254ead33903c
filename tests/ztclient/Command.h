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

/// A shell line and all that it leaves behind; "…" in a text stands for any text.
struct Case {
  std::string line;
  int status;
  std::string out;
  std::string err;
};

/// Runs a shell line in which "ztclient" is the command that was built, in a folder of its own.
class Shell {
 public:
  Outcome run(const std::string& line) const;
  void check(const std::vector<Case>& cases) const;
  /// A file for the lines.
  void write(const std::string& name, const std::string& bytes) const {
    folder_.write("files/" + name, bytes);
  }
  const TempFolder& folder() const { return folder_; }

 private:
  TempFolder folder_;
};

/// A service description that is real.
std::string serviceFile();

}  // namespace testsupport
