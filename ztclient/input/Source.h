#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tovin/ByteStreams.h"

/// The bytes of a file, or of standard input for "-", once and in order: memory does not grow with them.
///
/// - Errors: "Unable to open file %ls", "Unable to read file %ls", with the file and the system's reason; so
/// the end
///   is never mistaken for a failure.
class Source : public tovin::iByteInputStream {
 public:
  explicit Source(const std::string& given);
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;
  ~Source() override;

  size_t read(void* bytes, size_t count) override;
  /// The next bytes, which stay; fewer than asked for only at the end.
  std::string_view head(size_t count);
  /// The next line without its end, as soon as that has come; false behind the last one.
  /// Errors: "A line of the input is longer than %d bytes".
  bool readLine(std::string& line, size_t longest);

 private:
  size_t receive(unsigned char* bytes, size_t count) const;
  [[noreturn]] void fail(const wchar_t* pattern) const;

  std::wstring name_;
  intptr_t handle_;
  bool owned_;
  std::vector<unsigned char> room_;
};
