#include <iostream>

#include "tovinCore/Utf8.h"
#include "ztbaseclient/ztbaseclient.h"
#include "ztcore/ztMemoryStreams.h"

int main() {
  try {
    tovin::Ptr<CBaseNode> job(CBaseNode::allocate());  // counted: goes with its last Ptr
    job->setName(L"job");
    job->getProperties()->define(L"similarity", 0.85, 0);

    ztMemoryByteOutputStream record;
    job->serialize(record);

    ztMemoryByteInputStream stream(record.GetBytes(), record.GetSize());
    tovin::Ptr<CBaseNode> received(CBaseNode::allocate());
    received->deserialize(stream);
    tovin::WideString similarity;
    received->query(L"/job/@similarity", 0, similarity);
    std::cout << record.GetSize() << " bytes, similarity " << tovin::wideToUtf8(similarity.view()) << '\n';
  } catch (const tovin::Exception& e) {
    std::cerr << e.what() << '\n';
    return 1;
  }
}
