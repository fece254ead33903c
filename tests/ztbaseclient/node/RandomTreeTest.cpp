// Random trees with all value classes come back from their records as they were, in every version of the
// stream: what was lost on the way would be missing in the second record, whose bytes other tests know.
#include <cmath>
#include <random>

#include "tests/support/Bytes.h"
#include "tovin/values/BitsetValue.h"
#include "tovin/values/DoubleValue.h"
#include "tovin/values/IntegerArrayValue.h"
#include "tovin/values/IntegerValue.h"
#include "tovin/values/NullValue.h"
#include "tovin/values/StringArrayValue.h"
#include "tovin/values/StringValue.h"
#include "ztbaseclient/node/CBaseNode.h"
#include "ztbaseclient/node/CObjectTransportNode.h"

namespace {

using namespace testsupport;

class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}
  int below(int limit) { return static_cast<int>(engine_() % static_cast<unsigned>(limit)); }
  int number() { return static_cast<int>(engine_()) >> below(32); }

  // Null, empty, ASCII, two and three bytes a unit, surrogates in pairs and alone, names that begin with '_'.
  tovin::WideString text() {
    if (below(8) == 0) return {};
    std::wstring text(below(6) == 0 ? L"_" : L"");
    constexpr wchar_t units[] = {L'a',  L'Z',   L' ',   L'/',   0x7F,   0x80,  0x7FF,
                                 0x800, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xFFFF};
    for (int i = below(40); i > 0; --i) text += units[below(std::size(units))];
    return text;
  }

  tovin::Value* value() {
    switch (below(7)) {
      case 0:
        return tovin::NullValue::shared().cloneValue();
      case 1:
        return tovin::StringValue(text()).cloneValue();
      case 2:
        return tovin::DoubleValue(below(4) ? number() / 7.0 : std::nan("")).cloneValue();
      case 3:
        return tovin::IntegerValue(number()).cloneValue();
      case 4:
        return bits();
      case 5:
        return several(tovin::StringArrayValue::allocate(), [&] { return text(); });
      default:
        return several(tovin::IntegerArrayValue::allocate(), [&] { return number(); });
    }
  }

  tovin::Ptr<tovin::iNode> tree(int depth) {
    tovin::Ptr<tovin::iNode> node;
    if (below(4) == 0) {
      CObjectTransportNode* carrier = CObjectTransportNode::allocate();
      node = tovin::Ptr<tovin::iNode>(carrier);
      if (below(2)) carrier->SetObject(value());
    } else {
      node = tovin::Ptr<tovin::iNode>(CBaseNode::allocate());
    }
    node->setName(text());
    if (below(3) == 0) node->getNamePrefix();
    if (below(3) == 0) node->getProperties();
    for (int i = below(3) ? below(4) : below(30); i > 0; --i) {
      const tovin::WideString name = text();
      // A name that begins with '/' would be looked for along a path.
      if (name.view().starts_with(L"/") || node->getProperties()->isDefined(name)) continue;
      tovin::MemPtr<tovin::Value, tovin::InstanceDeallocator> owned(value());
      node->getProperties()->define(name, *owned, static_cast<unsigned>(below(128)));
    }
    for (int i = depth > 0 ? below(5) : 0; i > 0; --i) node->appendChild(tree(depth - 1).get());
    return node;
  }

 private:
  template <class Values, class Make>
  Values* several(Values* values, Make&& make) {
    for (int i = below(4); i > 0; --i) values->add(make());
    return values;
  }
  tovin::Value* bits() {
    auto* bits = tovin::BitsetValue::allocate();
    bits->resize(static_cast<unsigned>(below(70)));
    for (unsigned bit = 0; bit < bits->getNumBits(); ++bit) {
      if (below(2)) bits->setOn(bit);
    }
    return bits;
  }

  std::mt19937 engine_;
};

TEST(RandomTrees, ComeBackFromTheirRecords) {
  for (unsigned seed = 0; seed < 300; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const auto root = random.tree(3);
    for (int version : {1, 2, 3}) {
      Writer out(version), again(version);
      root->serialize(out);
      const tovin::Ptr<tovin::iNode> back(tovin::seek<tovin::iNode>(root->newInstance()));
      Reader in(out);
      back->deserialize(in);
      EXPECT_EQ(in.GetRemaining(), 0u);
      back->serialize(again);
      ASSERT_EQ(bytesOf(out), bytesOf(again));
    }
  }
}

}  // namespace
