#include "ztbaseclient/framework/RecordVersion.h"

#include "tovinCore/Exception.h"
#include "ztbaseclient/framework/StreamPrimitives.h"

namespace {

template <class Accept>
int32_t read(tovin::iByteInputStream& stream, int32_t expected, Accept&& accept) {
  int32_t version = 0;
  ReadCompactInt(stream, version);
  if (!accept(version))
    throw tovin::Exception(L"Deserialization version mismatch (%ld , %ld)", version, expected);
  return version;
}

}  // namespace

int32_t RecordVersion::require(tovin::iByteInputStream& stream, int32_t expected) {
  return read(stream, expected, [=](int32_t version) { return version == expected; });
}

int32_t RecordVersion::requireEither(tovin::iByteInputStream& stream, int32_t expected, int32_t older) {
  return read(stream, expected, [=](int32_t version) { return version == expected || version == older; });
}

int32_t RecordVersion::requireFrom(tovin::iByteInputStream& stream, int32_t first) {
  return read(stream, first, [=](int32_t version) { return version >= first; });
}
