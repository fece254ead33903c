#pragma once

#include <mutex>
#include <set>
#include <string>

#include "ztservice/call/Multipart.h"

/// Names files in a folder for what comes beside an answer: as its sender calls it, without anything that
/// leads out of the folder or is no name on some system, and never one that is there.
///
/// - Threads: any number may ask.
class AttachmentFiles {
 public:
  /// Makes the folder where there is none. Errors: tovin::Exception where that fails.
  explicit AttachmentFiles(std::string folder);

  std::string nameFor(const ztservice::call::MimePart& part);
  /// What is left of a name; empty where nothing is.
  static std::string cleaned(const std::string& name);

 private:
  std::string folder_;
  std::mutex lock_;
  std::set<std::string> given_;
};
