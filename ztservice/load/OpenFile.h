#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace ztservice::parse {

// A file of bytes that is read, closed whatever happens. Errors: Error with the file and the reason.
class OpenFile {
 public:
  explicit OpenFile(const std::string& path);
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile();

  uint64_t length() const;
  // How many bytes there were, 0 at the end.
  size_t read(char* out, size_t count);

 private:
  std::string path_;
  intptr_t handle_;
};

// The whole content of a file, up to one byte more than the limit.
std::string bytesOf(const std::string& path, uint64_t limit);

// Errors: Error with the file and why the system's last call for it failed.
[[noreturn]] void failFor(const std::string& path, const char* otherwise);

}  // namespace ztservice::parse
