#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  const testing::UnitTest& tests = *testing::UnitTest::GetInstance();
  const int status = RUN_ALL_TESTS();
  // A program that lost its tests, or a filter that matches none, must not look like success.
  if (tests.test_to_run_count() == 0 && !GTEST_FLAG_GET(list_tests)) {
    std::fputs("no test ran\n", stderr);
    return 1;
  }
  return status;
}
