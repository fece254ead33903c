#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "tovin/Object.h"
#include "tovinCore/LeakDetector.h"

namespace {

// Fails a test that ends with more living framework objects than it began with. Each program runs twice: with
// pools off, so that the address sanitizer sees every object come and go, and with pools on, as programs do;
// the tests of pools switch them on for themselves.
class LeakListener : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo&) override {
    tovin::Object::m_dontUsePools = !std::getenv("ZTB_TEST_POOLS");
    before_ = count();
  }

  void OnTestEnd(const testing::TestInfo&) override {
    for (const auto& [name, live] : count()) {
      if (live > before_[name])
        ADD_FAILURE() << live - before_[name] << " objects of class " << name << " are left";
    }
  }

  static std::map<std::string, long> count() {
    std::map<std::string, long> counts;
    for (const tovin::LeakDetector::Count& each : tovin::LeakDetector::report())
      counts[each.name] += each.live;
    return counts;
  }

  std::map<std::string, long> before_;
};

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  testing::UnitTest& tests = *testing::UnitTest::GetInstance();
  tests.listeners().Append(new LeakListener);
  const int status = RUN_ALL_TESTS();
  // A program that lost its tests, or a filter that matches none, must not look like success.
  if (tests.test_to_run_count() == 0 && !GTEST_FLAG_GET(list_tests)) {
    std::fputs("no test ran\n", stderr);
    return 1;
  }
  return status;
}
