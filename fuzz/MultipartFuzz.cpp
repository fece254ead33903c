// A multipart body. The first byte says in pieces of which length it comes, the line behind it is its type:
// it is taken apart as when it comes whole, or refused with the same words.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "tovinCore/Exception.h"
#include "ztservice/call/MultipartReader.h"

using namespace ztservice::call;

namespace {

template <class Read>
std::wstring outcome(Read&& read, RelatedParts& parts) {
  try {
    parts = read();
    return L"";
  } catch (const tovin::Exception& e) {
    return e.getMessage();
  }
}

bool operator==(const MimePart& a, const MimePart& b) {
  return a.id == b.id && a.mediaType == b.mediaType && a.fileName == b.fileName && a.bytes == b.bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::size_t end = std::min(rest.find('\n'), rest.size());
  const std::string_view type = rest.substr(0, end), body = rest.substr(std::min(end + 1, rest.size()));
  const std::size_t length = 1 + data[0] % 64;
  RelatedParts whole, pieces;
  const std::wstring wholeOutcome = outcome([&] { return readMultipart(type, body); }, whole);
  const std::wstring piecesOutcome = outcome(
      [&] {
        RelatedReader reader(type, body.size(), 0, {});
        for (std::size_t at = 0; at < body.size(); at += length) reader.feed(body.substr(at, length));
        return reader.take();
      },
      pieces);
  const bool isSame =
      wholeOutcome == piecesOutcome && whole.mediaType == pieces.mediaType && whole.root == pieces.root &&
      std::equal(whole.parts.begin(), whole.parts.end(), pieces.parts.begin(), pieces.parts.end(),
                 [](const MimePart& a, const MimePart& b) { return a == b; });
  if (!isSame) std::abort();
  return 0;
}
