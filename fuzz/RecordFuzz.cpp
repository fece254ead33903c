// Any bytes as a node record, in a stream version that the first byte chooses. What is read must be writable,
// and what was written must be read back alike.
#include <cstdlib>
#include <string>

#include "tovin/Ptr.h"
#include "tovinCore/Exception.h"
#include "ztbaseclient/node/CBaseNode.h"
#include "ztbaseclient/node/CObjectTransportNode.h"
#include "ztcore/ztMemoryStreams.h"

namespace {

template <class Node>
std::string rewritten(const uint8_t* bytes, size_t size, int version) {
  const tovin::Ptr<Node> node(Node::allocate());
  ztMemoryByteInputStream in(bytes, size, version);
  node->deserialize(in);
  ztMemoryByteOutputStream out(version);
  node->serialize(out);
  return std::string(reinterpret_cast<const char*>(out.GetBytes()), out.GetSize());
}

template <class Node>
void readTwice(const uint8_t* bytes, size_t size, int version) {
  std::string once;
  try {
    once = rewritten<Node>(bytes, size, version);
  } catch (const tovin::Exception&) {
    return;
  }
  const std::string twice =
      rewritten<Node>(reinterpret_cast<const uint8_t*>(once.data()), once.size(), version);
  if (once != twice) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  tovin::Object::m_dontUsePools = true;
  if (size == 0) return 0;
  const int version = bytes[0] % 4;
  if (bytes[0] & 0x80)
    readTwice<CObjectTransportNode>(bytes + 1, size - 1, version);
  else
    readTwice<CBaseNode>(bytes + 1, size - 1, version);
  return 0;
}
