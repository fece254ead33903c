#include "tovin/ByteStreams.h"

namespace tovin {

iByteOutputStream::~iByteOutputStream() = default;
iByteInputStream::~iByteInputStream() = default;

}  // namespace tovin
