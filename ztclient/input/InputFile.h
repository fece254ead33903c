#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

/// In bytes; 0 for a file that is not there.
int64_t lengthOf(const wchar_t* name);

/// A file that the command was given, by a name that the library can open. What cannot be read twice,
/// standard input
/// ("-") and pipes, is kept meanwhile in a file without a name: it goes with the command however that ends.
///
/// - Errors: "Unable to open file %ls", "Unable to read file %ls", "Unable to make a temporary file", with
/// the
///   system's reason.
class InputFile {
 public:
  explicit InputFile(const std::string& given);
  /// A file of these bytes, shown under a name.
  InputFile(std::string_view bytes, const std::wstring& shown);
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile();

  const wchar_t* name() const noexcept { return name_.c_str(); }
  uint64_t length() const;

 private:
  void keep(std::wstring shown);
  void write(const char* bytes, size_t count) const;

  intptr_t kept_ = -1;
  std::wstring name_;
};

/// All bytes of a file, or of standard input for "-"; reading ends behind `most`, so that more than it came
/// is seen by the size.
std::string readUpTo(const std::string& given, uint64_t most);

/// All bytes of a small file, or of standard input for "-". Errors: "more than 16 MiB" too.
std::string readBytes(const std::string& given);

/// The first line without its end, which is one LF or CR LF.
std::string firstLineOf(const std::string& given);
