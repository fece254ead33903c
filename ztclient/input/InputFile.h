#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

/// In bytes; 0 for a file that is not there.
int64_t lengthOf(const wchar_t* name);

/// A file that the command was given, by a name that the library can open: standard input, "-", and a pipe
/// are kept in a file of their own meanwhile, which nobody else may read.
class InputFile {
 public:
  explicit InputFile(const std::string& given);
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile();

  const wchar_t* name() const noexcept { return name_.c_str(); }
  uint64_t length() const;
  /// A message in which the files that are kept, all that there were, have the names that were given.
  static std::wstring asGiven(std::wstring message);

 private:
  void removeKept() const noexcept;

  std::filesystem::path kept_;
  std::wstring name_;
};
