#pragma once

#include <mutex>
#include <set>
#include <string>

#include "ztservice/call/Multipart.h"

namespace ztservice::call {

/// Names files in a folder for what comes beside an answer: as its sender calls it, without anything that
/// leads out of the folder or is no name on some system, and never one that is there.
///
///     ztservice::call::AttachmentFiles files("pictures");
///     ztservice::call::ClientOptions options;
///     options.fileFor = [&files](const auto& part) { return files.nameFor(part); };
///
/// - Threads: any number may ask.
class ZTSERVICE_API AttachmentFiles {
 public:
  /// Makes the folder where there is none. Errors: Error where that fails.
  explicit AttachmentFiles(std::string folder);

  std::string nameFor(const MimePart& part);
  /// What is left of a name; empty where nothing is.
  static std::string cleaned(const std::string& name);

 private:
  std::string folder_;
  std::mutex lock_;
  std::set<std::string> given_;
};

}  // namespace ztservice::call
