#include "ztservice/call/Compression.h"

#include <zlib.h>

#include <limits>
#include <new>

#include "ztservice/Error.h"

namespace ztservice::call {

std::string compressed(std::string_view bytes) {
  constexpr int gzipOfLargestWindow = 15 + 16, usualMemory = 8;
  if (bytes.size() > std::numeric_limits<uInt>::max())
    throw Error({}, "the request is too large to compress");
  z_stream stream{};
  if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, gzipOfLargestWindow, usualMemory,
                   Z_DEFAULT_STRATEGY) != Z_OK)
    throw std::bad_alloc();
  // The same bytes on every system: the head says no time, and not which system made it.
  gz_header head{};
  head.os = 255;
  deflateSetHeader(&stream, &head);
  std::string out(deflateBound(&stream, static_cast<uLong>(bytes.size())), '\0');
  // The interface takes no constant bytes, and leaves them as they are.
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  const int result = deflate(&stream, Z_FINISH);
  out.resize(stream.total_out);
  deflateEnd(&stream);
  if (result != Z_STREAM_END) throw std::bad_alloc();
  return out;
}

}  // namespace ztservice::call
