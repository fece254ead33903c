#include "tovinCore/CriticalSection.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/support/Threads.h"
#include "tovinCore/Exception.h"

namespace {

TEST(CriticalSection, LetsOneThreadInAtATime) {
  tovin::CriticalSection section;
  long counter = 0;
  testsupport::inThreads(8, [&](int) {
    for (int i = 0; i < 20'000; ++i) {
      tovin::AutoCriticalSection held(section);
      held.lock(60'000, true);
      ++counter;
    }
  });
  EXPECT_EQ(counter, 160'000);
}

TEST(CriticalSection, GivesUpAfterItsTimeOut) {
  tovin::CriticalSection section;
  ASSERT_TRUE(section.lock(0));
  std::thread([&] {
    EXPECT_FALSE(section.lock(20));
    tovin::AutoCriticalSection held(section);
    EXPECT_THROW(held.lock(1, true), tovin::Exception);
  }).join();
  section.unlock();
  EXPECT_TRUE(section.tryLock());
  section.unlock();
}

}  // namespace
