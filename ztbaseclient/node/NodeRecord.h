#pragma once

#include "tovin/ByteStreams.h"
#include "tovin/Ptr.h"
#include "tovin/iNode.h"
#include "ztbaseclient/Export.h"

/// Reads the record of a node whose class the reader does not know: the version that it begins with tells
/// whether it is a base or a transport node.
///
///     ztMemoryByteInputStream stream(bytes, count);
///     const tovin::Ptr<tovin::iNode> root = ReadNodeRecord(stream);
///
/// Bytes behind the record stay in the stream. Errors are those of the class's own deserialize; of another
/// version what CBaseNode says of it.
ZTBASECLIENT_API tovin::Ptr<tovin::iNode> ReadNodeRecord(tovin::iByteInputStream& stream);
