#include "tovinCore/platform/InternetAddress.h"

#include <gtest/gtest.h>

#include <cstring>

using tovin::platform::fromDotted;
using tovin::platform::toDotted;

namespace {

TEST(InternetAddress, StandsInNetworkOrder) {
  in_addr address{};
  ASSERT_TRUE(fromDotted("192.0.2.7", address));
  EXPECT_EQ(std::memcmp(&address, "\xC0\x00\x02\x07", 4), 0);
  EXPECT_EQ(toDotted(address), "192.0.2.7");
}

TEST(InternetAddress, TakesFourNumbersAndNothingElse) {
  in_addr address{};
  for (const char* text : {"", "1.2.3", "1.2.3.4.5", "1.2.3.", "1.2.3.256", "1.2.3.04", "1.2.3.-4",
                           " 1.2.3.4", "1.2.3.4 ", "1..3.4", "1.2.3.x"})
    EXPECT_FALSE(fromDotted(text, address)) << text;
  EXPECT_EQ(toDotted(address), "0.0.0.0");
}

}  // namespace
