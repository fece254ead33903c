#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ztservice/call/Request.h"
#include "ztservice/load/OpenFile.h"

namespace ztservice::call {

// The bytes of a request's body in their order: the body itself, or the multipart that it is the root of.
// What lies in files is read as it goes, and is as long as it was at first.
class BodyReader {
 public:
  // The request outlives it. Errors: Error for a file that cannot be read.
  explicit BodyReader(const Request& request);

  uint64_t size() const noexcept { return size_; }
  // How many there were, 0 at the end. Errors: Error for a file that cannot be read any more.
  size_t read(char* out, size_t count);
  void rewind();

 private:
  // Text of its own, or what belongs to the request.
  struct Piece {
    std::string text;
    const std::string* bytes = nullptr;
    const std::string* file = nullptr;
    uint64_t size = 0;
  };

  void add(Piece piece);

  std::vector<Piece> pieces_;
  uint64_t size_ = 0;
  // Where it is: a piece, and how much of it is read.
  size_t piece_ = 0;
  uint64_t at_ = 0;
  std::optional<parse::OpenFile> open_;
};

}  // namespace ztservice::call
