#pragma once

#include <cstdint>

#include "tovin/ByteStreams.h"
#include "ztbaseclient/Export.h"

/// Reads the version that a record begins with. The one message of all of them:
/// "Deserialization version mismatch (%ld , %ld)" with the version read and the one expected.
namespace RecordVersion {

ZTBASECLIENT_API int32_t require(tovin::iByteInputStream& stream, int32_t expected);
/// Also takes an older version of the record; returns which it is.
ZTBASECLIENT_API int32_t requireEither(tovin::iByteInputStream& stream, int32_t expected, int32_t older);
/// Also takes every later version.
ZTBASECLIENT_API int32_t requireFrom(tovin::iByteInputStream& stream, int32_t first);

}  // namespace RecordVersion
