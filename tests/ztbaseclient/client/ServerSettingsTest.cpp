#include <gtest/gtest.h>

#include "tests/support/TempFolder.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Environment.h"
#include "ztbaseclient/client/ztSoapUtils.h"

namespace {

using testsupport::ScopedVariable;
using tovin::WideString;

class ServerSettings : public testing::Test {
 protected:
  void save(const std::string& text) { folder_.write("dravolin/settings.ini", text); }
  void configure(const std::string& text) { folder_.write("dravolin/server.conf", text); }

  // The end point, and in front of it whether it was a saved one.
  static std::string endPoint(const wchar_t* before = nullptr) {
    WideString text(before);
    const bool saved = ztSoapUtils::GetServerEndpointSetting(text);
    return (saved ? "saved " : "default ") + tovin::wideToUtf8(text.view());
  }

  testsupport::TempFolder folder_;
  ScopedVariable home_{"XDG_CONFIG_HOME", folder_.path()};
  ScopedVariable config_{"DRAVOLIN_SERVER_CONFIG", nullptr};
};

TEST_F(ServerSettings, SavedEndPointGoesBeforeTheDefault) {
  const std::string fallback = "default https://localhost:9943/dravolin/locator";
  EXPECT_EQ(endPoint(), fallback);
  EXPECT_EQ(endPoint(L""), fallback);
  EXPECT_EQ(endPoint(L"given"), "saved given");
  const struct {
    const char *text, *endPoint;
  } rows[] = {{"[Software\\DraVolin\\Corvanta_8_0_1]\nServerEndpoint=http://atlas\n", "saved http://atlas"},
              {"[Software\\DraVolin\\Corvanta_8_0_1]\nServerEndpoint=\n", fallback.c_str()},
              {"[Software\\DraVolin\\Corvanta_8_0_1_500]\nServerEndpoint=http://atlas\n", fallback.c_str()},
              {"ServerEndpoint=http://atlas\n", fallback.c_str()},
              {"\xFF\xFE[[[\0", fallback.c_str()}};
  for (const auto& row : rows) {
    save(row.text);
    EXPECT_EQ(endPoint(), row.endPoint) << row.text;
  }
  std::filesystem::remove(folder_.path("dravolin/settings.ini"));
  std::filesystem::create_directory(folder_.path("dravolin/settings.ini"));
  EXPECT_EQ(endPoint(), fallback);
}

TEST_F(ServerSettings, PlainHttpIsForbiddenTowardsThisComputer) {
  EXPECT_TRUE(ztSoapUtils::UseHttp("ftp://localhost")) << "without the switch everything goes";
  configure("DrvDevNoHttp=no\n");
  EXPECT_TRUE(ztSoapUtils::UseHttp("http://localhost"));
  configure("drvdevnohttp = TRUE\n");
  const struct {
    std::string endPoint;
    bool allowed;
  } rows[] = {{"http://atlas.invalid", true},
              {"HTTPS://atlas.invalid", true},
              {"httpd", true},
              {"atlas.invalid", false},
              {"http://localhost:9944", false},
              {"http://LOCALHOST", true},
              {"http://x/localhost/", false},
              {"http://" + tovin::wideToUtf8(tovin::platform::computerName()) + ".org", false},
              {"", false}};
  for (const auto& row : rows)
    EXPECT_EQ(ztSoapUtils::UseHttp(row.endPoint.c_str()), row.allowed) << row.endPoint;
  EXPECT_FALSE(ztSoapUtils::UseHttp(nullptr));
  save("[Software\\DraVolin\\Corvanta_8_0_1]\nServerEndpoint=http://atlas.invalid\n");
  EXPECT_TRUE(ztSoapUtils::UseHttp(nullptr));
  configure("");
  std::filesystem::remove(folder_.path("dravolin/server.conf"));
  std::filesystem::create_directory(folder_.path("dravolin/server.conf"));
  EXPECT_TRUE(ztSoapUtils::UseHttp("http://localhost")) << "a configuration that cannot be read sets nothing";
}

}  // namespace
