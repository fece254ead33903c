#include "ztservice/call/BodyReader.h"

#include <algorithm>
#include <cstring>

namespace ztservice::call {

BodyReader::BodyReader(const Request& request) {
  const bool isAlone = request.attachments.empty();
  const auto head = [&request](const std::string& mediaType, const std::string& id) {
    return "--" + request.boundary + "\r\nContent-Type: " + mediaType +
           "\r\nContent-Transfer-Encoding: binary\r\nContent-ID: <" + id + ">\r\n\r\n";
  };
  if (!isAlone) add({head(request.rootType, request.rootId())});
  add({{}, &request.body});
  for (const MimePart& part : request.attachments) {
    add({"\r\n" + head(part.mediaType, part.id)});
    if (part.file.empty())
      add({{}, &part.bytes});
    else
      add({{}, nullptr, &part.file, parse::OpenFile(part.file).length()});
  }
  if (!isAlone) add({"\r\n--" + request.boundary + "--\r\n"});
}

void BodyReader::add(Piece piece) {
  if (!piece.file) piece.size = piece.bytes ? piece.bytes->size() : piece.text.size();
  size_ += piece.size;
  pieces_.push_back(std::move(piece));
}

size_t BodyReader::read(char* out, size_t count) {
  while (piece_ < pieces_.size() && at_ == pieces_[piece_].size) {
    open_.reset();
    ++piece_;
    at_ = 0;
  }
  if (piece_ == pieces_.size()) return 0;
  const Piece& piece = pieces_[piece_];
  count = static_cast<size_t>(std::min<uint64_t>(count, piece.size - at_));
  if (piece.file) {
    if (!open_) open_.emplace(*piece.file);
    count = open_->read(out, count);
    if (count == 0) throw Error({*piece.file}, "has become shorter while it was sent");
  } else {
    std::memcpy(out, (piece.bytes ? *piece.bytes : piece.text).data() + at_, count);
  }
  at_ += count;
  return count;
}

void BodyReader::rewind() {
  open_.reset();
  piece_ = 0;
  at_ = 0;
}

}  // namespace ztservice::call
