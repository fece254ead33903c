#include "ztclient/log/EntryTime.h"

#include <gtest/gtest.h>

namespace {

TEST(EntryTime, IsReadFromTheUsualForms) {
  constexpr int64_t base = 1764165787000;  // 2025-11-26 14:03:07
  const struct {
    const char* text;
    std::optional<int64_t> time;
  } rows[] = {{"2025-11-26T14:03:07Z", base},
              {"2025-11-26 14:03:07", base},
              {"2025/11/26 14:03:07.25", base + 250},
              {"2025-11-26T14:03:07,0019999999999999999999", base + 1},
              {"2025-11-26T15:33:07+01:30", base},
              {"2025-11-26 04:03:07 -1000", base},
              {"2025-11-26 14:03", base - 7000},
              {"2025-11-26", base - 50587000},
              {"1764165787", base},
              {"1764165787000", base},
              {"1970-01-01", 0},
              {"1969-12-31 23:59:59.999", -1},
              {"2024-02-29", 1709164800000},
              {"2025-02-29", std::nullopt},
              {"2025-13-01", std::nullopt},
              {"2025-11-26T24:00", std::nullopt},
              {"2025-11-26T14:03:07Zx", std::nullopt},
              {"2025-11-26T14:03:07.", std::nullopt},
              {"2025-11-26T14:03+1", std::nullopt},
              {"2025-11/26", std::nullopt},
              {"2025-11-26T", std::nullopt},
              {"2025", std::nullopt},
              {"1234567890123456", std::nullopt},
              {"14:03:07", std::nullopt},
              {"", std::nullopt}};
  for (const auto& row : rows) EXPECT_EQ(entryTime::parse(row.text), row.time) << row.text;
}

TEST(EntryTime, IsShownAsItIsRead) {
  for (const char* text : {"2025-11-26 14:03:07", "1969-12-31 23:59:59.999", "0000-01-01 00:00:00.001"}) {
    const auto time = entryTime::parse(text);
    ASSERT_TRUE(time) << text;
    EXPECT_EQ(entryTime::text(*time), text);
  }
}

}  // namespace
