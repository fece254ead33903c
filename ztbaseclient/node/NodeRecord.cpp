#include "ztbaseclient/node/NodeRecord.h"

#include <algorithm>
#include <string>

#include "tovinCore/Guard.h"
#include "ztbaseclient/framework/StreamPrimitives.h"
#include "ztbaseclient/node/CBaseNode.h"
#include "ztbaseclient/node/CObjectTransportNode.h"

namespace {

// A stream whose beginning is read twice.
class TwiceReadStream final : public tovin::iByteInputStream {
 public:
  explicit TwiceReadStream(tovin::iByteInputStream& source) : source_(source) {
    setSerializationVersion(source.getSerializationVersion());
  }

  void goBack() { again_ = true; }

  size_t read(void* bytes, size_t count) override {
    auto* to = static_cast<char*>(bytes);
    if (!again_) {
      const size_t got = source_.take(bytes, count);
      beginning_.append(to, got);
      return got;
    }
    const size_t kept = std::min(count, beginning_.size() - at_);
    std::copy_n(beginning_.data() + at_, kept, to);
    at_ += kept;
    return kept == count ? count : kept + source_.take(to + kept, count - kept);
  }

 private:
  tovin::iByteInputStream& source_;
  std::string beginning_;
  size_t at_ = 0;
  bool again_ = false;
};

tovin::Ptr<tovin::iNode> makeNodeOf(int32_t version) {
  const bool transport = version == CObjectTransportNode::OBJECT_TRANSPORT_NODE_VERSION ||
                         version == CObjectTransportNode::OLD_OBJECT_TRANSPORT_NODE_VERSION;
  if (transport) return tovin::Ptr<tovin::iNode>(CObjectTransportNode::allocate());
  return tovin::Ptr<tovin::iNode>(CBaseNode::allocate());
}

}  // namespace

tovin::Ptr<tovin::iNode> ReadNodeRecord(tovin::iByteInputStream& stream) {
  return tovin::guarded({"NodeRecord", "ReadNodeRecord"}, [&] {
    TwiceReadStream twice(stream);
    int32_t version = 0;
    ReadCompactInt(twice, version);
    twice.goBack();
    tovin::Ptr<tovin::iNode> node = makeNodeOf(version);
    node->deserialize(twice);
    return node;
  });
}
