#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "ztservice/call/Binary.h"
#include "ztservice/call/Multipart.h"

namespace ztservice::call {

// Takes a multipart body (RFC 2046) apart, in pieces as they come: it keeps no more of them than a delimiter,
// or the head of a part, is long.
//
// - Lines may end in LF alone. What stands before the first delimiter and behind the last one is passed over.
// - Content comes decoded from base64 and quoted-printable.
class MultipartReader {
 public:
  // What is found, in its order.
  class Sink {
   public:
    virtual ~Sink() = default;
    virtual void begin(MimePart head) = 0;
    virtual void content(std::string_view bytes) = 0;
    virtual void end() = 0;
  };

  // Errors: Error without a boundary. The sink outlives it.
  MultipartReader(std::string_view contentType, Sink& sink);

  // Errors: Error for too many parts, or too large a head.
  void feed(std::string_view bytes);
  // Errors: Error where the last delimiter has not come.
  void finish() const;

 private:
  enum class State { before, head, content, behind };
  enum class Coding { none, base64, quotedPrintable };

  bool step();
  bool takeHead();
  bool takeContent();
  void endPart();
  void give(std::string_view bytes);
  void decodeQuotedPrintable(std::string_view bytes);

  Sink& sink_;
  // LF and the two dashes with it.
  std::string delimiter_;
  // What has come and is not taken.
  std::string buffer_ = "\n";
  State state_ = State::before;
  Coding coding_ = Coding::none;
  // Whether the line end that stands before a part's content is there still.
  bool isFirst_ = false;
  size_t parts_ = 0;
  Base64Decoder base64_;
  // Of quoted-printable, an escape that is not complete.
  std::string escape_;
};

// Gathers the root in memory and what is beside it there or in files.
class ZTSERVICE_API RelatedReader : private MultipartReader::Sink {
 public:
  // \param room for all that is kept in memory. \param fileRoom for each file.
  // \param fileFor a new file for a part, empty for memory; may be null.
  RelatedReader(std::string_view contentType, uint64_t room, uint64_t fileRoom,
                std::function<std::string(const MimePart&)> fileFor);
  RelatedReader(const RelatedReader&) = delete;
  RelatedReader& operator=(const RelatedReader&) = delete;
  // Files of parts that did not come whole are removed.
  ~RelatedReader() override;

  // Errors: as of MultipartReader, and for what there is no room for and files that cannot be written.
  void feed(std::string_view bytes);
  // All that came. Errors: a body that is cut off or has no root.
  RelatedParts take();

 private:
  void begin(MimePart head) override;
  void content(std::string_view bytes) override;
  void end() override;

  MultipartReader reader_;
  std::string start_;
  uint64_t room_;
  uint64_t fileRoom_;
  std::function<std::string(const MimePart&)> fileFor_;
  RelatedParts out_;
  bool hasRoot_ = false;
  bool isInRoot_ = false;
  bool isTaken_ = false;
  intptr_t open_ = -1;
  uint64_t written_ = 0;
};

}  // namespace ztservice::call
