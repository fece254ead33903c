// A path query from anywhere, on a small tree: either a clear error or an answer that stands in the tree.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "tovin/Ptr.h"
#include "tovin/values/StringValue.h"
#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/node/CBaseNode.h"

namespace {

// Longer ones would only be slower.
constexpr std::size_t longest = 120;

tovin::Ptr<tovin::iNode> makeTree(int depth) {
  tovin::Ptr<tovin::iNode> node(CBaseNode::allocate());
  node->setName(depth % 2 ? L"a" : L"p:b");
  node->getProperties()->define(L"x", L"1", 0);
  node->getProperties()->define(L"my prop", 2.5, 0);
  if (depth == 0) node->setValue(tovin::StringValue(L"text"));
  for (int i = 0; i < (depth > 0 ? 2 : 0); ++i) node->appendChild(makeTree(depth - 1).get());
  return node;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const tovin::Ptr<tovin::iNode> root = makeTree(2);
  if (size > longest) return 0;
  const std::wstring query = tovin::utf8ToWide(std::string(reinterpret_cast<const char*>(data), size));
  const tovin::iNode* context = root->getChildAt(1);
  try {
    tovin::WideString text;
    bool truth = false;
    context->query(query.c_str(), 0, text);
    context->query(query.c_str(), 0, truth);
    tovin::NodeReferenceSet nodes;
    const bool any = context->query(query.c_str(), 3, nodes);
    if (any != !nodes.isEmpty()) std::abort();
    for (std::size_t i = 0; i < nodes.getSize(); ++i) {
      if (nodes[i]->getRoot() != root.get()) std::abort();
    }
  } catch (const tovin::Exception&) {
  }
  return 0;
}
