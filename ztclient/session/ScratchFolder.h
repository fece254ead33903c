#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// A new folder among the system's temporary ones, which goes with all it holds.
class ScratchFolder {
 public:
  ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder();

  /// Writes a file and returns its path.
  std::wstring write(const std::string& name, std::string_view bytes) const;
  /// A message with the paths of files in the folder cut down to their names.
  std::wstring shown(std::wstring message) const;

 private:
  std::filesystem::path folder_;
};
