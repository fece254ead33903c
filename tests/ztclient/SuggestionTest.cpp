#include "ztclient/arguments/Suggestion.h"
#include "ztservice/call/Nearest.h"

#include <gtest/gtest.h>

namespace {

using ztservice::call::nearest;

TEST(Suggestion, IsTheNearestWordIfItIsNear) {
  const std::vector<std::string> words = {"session", "query", "checksum", "log", "--json", "--url"};
  const std::pair<std::string, std::string> cases[] = {{"quary", "query"},
                                                       {"qeury", "query"},
                                                       {"sesion", "session"},
                                                       {"chksum", "checksum"},
                                                       {"lgo", "log"},
                                                       {"--josn", "--json"},
                                                       {"--ulr", "--url"},
                                                       {"frobnicate", ""},
                                                       {"cat", ""},
                                                       {"", ""},
                                                       {std::string(100000, 'q'), ""}};
  for (const auto& [typed, meant] : cases) EXPECT_EQ(nearest(typed, words), meant) << typed.substr(0, 20);
  EXPECT_EQ(nearest("x", {}), "");
}

}  // namespace
