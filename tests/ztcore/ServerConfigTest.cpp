#include "ztcore/ztServerConfig.h"

#include "tests/support/TempFolder.h"
#include "tovinCore/Exception.h"

namespace {

using namespace testsupport;

TEST(ServerConfig, IsWhereTheVariableSays) {
  const OwnSettings own;
  const TempFolder& folder = own.folder();
  const ScopedVariable none("DRAVOLIN_SERVER_CONFIG", nullptr);
  tovin::WideString value;
  EXPECT_FALSE(ztServerConfig::GetParameter(L"a", value));
  folder.write("dravolin/server.conf", "A = default\n");
  EXPECT_TRUE(ztServerConfig::GetParameter(L"a", value));
  EXPECT_TRUE(value == L"default");
  const ScopedVariable chosen("DRAVOLIN_SERVER_CONFIG", folder.write("mine", "a=mine\n[section]\nb=1\n"));
  EXPECT_TRUE(ztServerConfig::GetParameter(L"a", value));
  EXPECT_TRUE(value == L"mine");
  EXPECT_FALSE(ztServerConfig::GetParameter(L"b", value));
  const ScopedVariable unreadable("DRAVOLIN_SERVER_CONFIG", folder.path());
  EXPECT_THROW(ztServerConfig::GetParameter(L"a", value), tovin::Exception);
}

}  // namespace
