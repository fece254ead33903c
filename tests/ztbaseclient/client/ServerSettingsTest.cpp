#include "tests/support/TempFolder.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Environment.h"
#include "ztbaseclient/client/ztSoapUtils.h"
#include "ztcore/ztRegistry.h"

namespace {

using namespace testsupport;
using tovin::WideString;

class ServerSettings : public testing::Test {
 protected:
  static void save(const wchar_t* key, const wchar_t* endPoint) {
    ztRegistry registry;
    ASSERT_TRUE(registry.Connect(ztRegistry::CurrentUser) && registry.Create(key));
    registry.SetValue(L"ServerEndpoint", endPoint);
  }
  void configure(const std::string& text) { own_.folder().write("dravolin/server.conf", text); }
  // A folder in the place of a file.
  void spoil(const std::string& name) {
    const std::string path = own_.folder().path("dravolin/" + name);
    std::filesystem::remove(path);
    std::filesystem::create_directories(path);
  }

  // The end point, and in front of it whether it was a saved one.
  static std::string endPoint(const wchar_t* before = nullptr) {
    WideString text(before);
    const bool saved = ztSoapUtils::GetServerEndpointSetting(text);
    return (saved ? "saved " : "default ") + tovin::wideToUtf8(text.view());
  }

  static constexpr const wchar_t* key = L"Software\\DraVolin\\Corvanta_8_0_1";

  OwnSettings own_;
  ScopedVariable config_{"DRAVOLIN_SERVER_CONFIG", nullptr};
};

TEST_F(ServerSettings, SavedEndPointGoesBeforeTheDefault) {
  const std::string fallback = "default https://localhost:9943/dravolin/locator";
  EXPECT_EQ(endPoint(), fallback);
  EXPECT_EQ(endPoint(L""), fallback);
  EXPECT_EQ(endPoint(L"given"), "saved given");
  save(L"Software\\DraVolin\\Corvanta_8_0_1_500", L"http://atlas");
  EXPECT_EQ(endPoint(), fallback);
  save(key, L"http://atlas");
  EXPECT_EQ(endPoint(), "saved http://atlas");
  save(key, L"");
  EXPECT_EQ(endPoint(), fallback);
  spoil("settings.ini");
  EXPECT_EQ(endPoint(), fallback);
}

TEST_F(ServerSettings, PlainHttpIsForbiddenTowardsThisComputer) {
  EXPECT_TRUE(ztSoapUtils::UseHttp("ftp://localhost")) << "without the switch everything goes";
  configure("DrvDevNoHttp=no\n");
  EXPECT_TRUE(ztSoapUtils::UseHttp("http://localhost"));
  configure("drvdevnohttp = TRUE\n");
  const std::pair<std::string, bool> rows[] = {
      {"http://atlas.invalid", true},
      {"HTTPS://atlas.invalid", true},
      {"httpd", true},
      {"atlas.invalid", false},
      {"http://localhost:9944", false},
      {"http://LOCALHOST", true},
      {"http://x/localhost/", false},
      {"http://" + tovin::wideToUtf8(tovin::platform::computerName()) + ".org", false},
      {"", false}};
  for (const auto& [endPoint, allowed] : rows)
    EXPECT_EQ(ztSoapUtils::UseHttp(endPoint.c_str()), allowed) << endPoint;
  EXPECT_FALSE(ztSoapUtils::UseHttp(nullptr));
  save(key, L"http://atlas.invalid");
  EXPECT_TRUE(ztSoapUtils::UseHttp(nullptr));
  spoil("server.conf");
  EXPECT_TRUE(ztSoapUtils::UseHttp("http://localhost")) << "a configuration that cannot be read sets nothing";
}

}  // namespace
