// A tree of nodes with typed properties, written as a record and read back.
#include <iostream>
#include <vector>

#include "tovin/values/IntegerValue.h"
#include "tovin/values/StringArrayValue.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/ztbaseclient.h"
#include "ztcore/ztMemoryStreams.h"

namespace {

tovin::Ptr<CBaseNode> makeJob() {
  tovin::Ptr<CBaseNode> job(CBaseNode::allocate());
  job->setName(L"job");
  job->getProperties()->define(L"protocol", L"Find Similar", 0);
  job->getProperties()->define(L"similarity", 0.85, 0);
  job->getProperties()->define(L"limit", tovin::IntegerValue(25), 0);

  // The parent takes a reference; a child needs no other holder.
  tovin::iNode* step = CBaseNode::allocate();
  job->appendChild(step);
  step->setName(L"step");
  tovin::StringArrayValue columns;
  columns.add(L"name");
  columns.add(L"mass");
  step->getProperties()->define(L"columns", columns, 0);
  return job;
}

void printNode(const tovin::iNode& node, const std::string& margin) {
  std::cout << margin << tovin::wideToUtf8(node.getName()) << '\n';
  const tovin::iPropertyCollection* properties = node.hasProperties() ? node.getProperties() : nullptr;
  for (unsigned i = 0; properties && i < properties->getSize(); ++i) {
    const tovin::iProperty& property = *properties->get(i);
    std::cout << margin << "  " << tovin::wideToUtf8(property.getName()) << " = "
              << tovin::wideToUtf8(property.getValue().getText()) << "  ("
              << static_cast<const char*>(property.getValue().getClassTag()) << ")\n";
  }
}

// With a list of what is still to be printed: a record from elsewhere may be deeper than the stack.
void print(const tovin::iNode& root) {
  std::vector<std::pair<const tovin::iNode*, size_t>> open{{&root, 0}};
  while (!open.empty()) {
    const auto [node, depth] = open.back();
    open.pop_back();
    printNode(*node, std::string(2 * depth, ' '));
    const auto children = node->getChildren();
    for (size_t i = children.size(); i > 0; --i) open.push_back({children[i - 1], depth + 1});
  }
}

void run() {
  ztMemoryByteOutputStream out;
  makeJob()->serialize(out);
  std::cout << "record of " << out.GetSize() << " bytes\n";

  // Damaged or foreign bytes are refused with an exception; nothing is read beyond what is there.
  ztMemoryByteInputStream in(out.GetBytes(), out.GetSize());
  tovin::Ptr<CBaseNode> received(CBaseNode::allocate());
  received->deserialize(in);
  print(*received);
}

}  // namespace

int main() {
  try {
    run();
    return 0;
  } catch (const tovin::Exception& e) {
    std::cerr << e.what() << '\n';  // the message and the calls that it passed
    return 1;
  }
}
