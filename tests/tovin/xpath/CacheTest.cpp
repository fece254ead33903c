#include "tests/support/Threads.h"
#include "tests/tovin/xpath/Trees.h"

namespace {

using namespace testsupport;

// More queries than the cache keeps, the same ones and others at once, each thread on a tree of its own.
TEST(QueryCache, ServesManyThreads) {
  inThreads(8, [](int thread) {
    const tovin::Ptr<tovin::iNode> root = treeOf("<a><b n='1'/><b n='2'/></a>");
    for (int i = 0; i < 1500; ++i) {
      const int number = i % 3 ? i % 7 : i + thread * 100;
      int result = -1;
      root->query(tovin::format(L"count(//b) + %d", number).c_str(), 0, result);
      ASSERT_EQ(result, number + 2);
      EXPECT_THROW(root->query(L"//b[", 0, result), tovin::Exception);
    }
  });
}

}  // namespace
