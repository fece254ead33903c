#include "ztclient/session/UploadedForm.h"

#include <gtest/gtest.h>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"

namespace {

const std::string type = "multipart/form-data; boundary=\"b\"";
const std::string one =
    "--b\r\nContent-Disposition: form-data; NAME=\"f\"; filename=\"a\"\r\nX-Y: z\r\n\r\nco\r\n--nt";

TEST(UploadedForm, IsTakenApartAtItsBoundaryOnly) {
  const auto sections = sectionsOf(type, one + "\r\n--b\r\n\r\n\r\n--b--\r\n");
  ASSERT_EQ(sections.size(), 2u);
  EXPECT_EQ(sections[0].content, "co\r\n--nt");
  EXPECT_EQ(sections[0].parameter("name"), "f");
  EXPECT_EQ(sections[0].parameter("filename"), "a");
  EXPECT_EQ(sections[0].header("x-y"), "z");
  EXPECT_EQ(sections[0].header("x"), "");
  EXPECT_EQ(sections[1].content, "");
}

TEST(UploadedForm, ThatIsDamagedSaysHow) {
  const std::tuple<std::string, std::string, std::string> cases[] = {
      {"text/plain", one, "The form has no boundary"},
      {type, "", "The form is damaged"},
      {type, "--b", "The form is cut off"},
      {type, one, "The form is cut off"},
      {type, "--bx\r\n--b--", "The form is damaged"},
      {type, "--b\r\nno end of the head\r\n--b--", "The form is damaged"}};
  for (const auto& [contentType, body, message] : cases) {
    try {
      sectionsOf(contentType, body);
      ADD_FAILURE() << message;
    } catch (const tovin::Exception& e) {
      EXPECT_EQ(tovin::wideToUtf8(e.getMessage()), message);
    }
  }
}

}  // namespace
