#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/support/TempFolder.h"
#include "tovinCore/Utf8.h"
#include "ztclient/answers/CallAnswer.h"
#include "ztclient/input/JsonValue.h"
#include "ztservice/call/AttachmentFiles.h"
#include "ztservice/call/MultipartReader.h"

using namespace ztservice::call;
using testing::HasSubstr;
using testing::Not;

namespace {

const ztservice::Service& pictures() {
  static const ztservice::Service service = ztservice::load(ZTB_TEST_DATA "/call/pictures.wsdl");
  return service;
}

Target target(std::string_view operation, std::string_view port = "Soap") {
  return requireOperation(pictures(), operation, port);
}

template <class Work>
std::string outcome(Work&& work) {
  try {
    return work();
  } catch (const tovin::Exception& e) {
    return tovin::wideToUtf8(e.getMessage());
  }
}

std::string shown(const RelatedParts& parts) {
  std::string text = parts.root;
  for (const MimePart& part : parts.parts)
    text += " | " + part.id + ' ' + part.mediaType + ' ' + part.fileName + ": " + part.bytes;
  return text;
}

TEST(Multipart, IsTakenApartHoweverItComes) {
  struct Row {
    std::string type;
    std::string body;
    std::string wanted;
  };
  const std::string plain =
      "--b\r\n\r\nroot\r\n--b\r\nContent-ID: <1>\r\nContent-Type: a/b\r\n\r\nx\r\n--b--\r\n";
  for (const auto& [type, body, wanted] : std::vector<Row>{
           {"multipart/related; boundary=b", plain, "root | 1 a/b : x"},
           {"MULTIPART/Related; type=\"text/xml\" ; Boundary = \"b\"", plain, "root | 1 a/b : x"},
           {"multipart/related; start=\"<1>\"; boundary=b", plain, "x |   : root"},
           {"multipart/related; boundary=\"b;\\\"c\"", "--b;\"c\n\nroot\n--b;\"c--", "root"},
           {"multipart/related; boundary=b", "before\n--b \t\nA: 1\n\nroot\n--b\n\n\n--b--behind\n--b\n",
            "root |   : "},
           {"multipart/related; boundary=b", "--b\r\n\r\n--bb\r\n--b-\r\n\r\r\n--b--", "--bb\r\n--b-\r\n\r"},
           {"multipart/related; boundary=b",
            "--b\n\nr\n--b\nContent-Transfer-Encoding: BASE64\ncontent-type: a/b;\n "
            "name=\"q\\\"r.txt\"\n\naGVs\r\n bG8=\n--b--",
            "r | a/b; name=\"q\\\"r.txt\" q\"r.txt: hello"},
           {"multipart/related; boundary=b",
            "--b\n\nr\n--b\nContent-Disposition: attachment; filename=a.b\nContent-Transfer-Encoding: "
            "quoted-printable\n\n"
            "a=3Db=\r\nc=C3=a4=zz=\n--b\nContent-Transfer-Encoding: quoted-printable\n\na=4\n--b--",
            "r |  a.b: a=bc\xC3\xA4=zz |   : a=4"},
           {"multipart/related", plain, "its parts have no boundary"},
           {"multipart/related; boundary=b; start=\"<2>\"", plain, "it has no part 2, which is its root"},
           {"multipart/related; boundary=b", plain.substr(0, plain.size() - 4), "its parts are cut off"},
           {"multipart/related; boundary=b", "--b--", "it has no parts"},
           {"multipart/related; boundary=b", "--b\n" + std::string(20000, 'a'),
            "the head of a part is larger than 16 KiB"}}) {
    // An id that is missing leaves a blank less.
    const auto compact = [](std::string text) {
      for (size_t at; (at = text.find("|  ")) != text.npos;) text.erase(at + 1, 1);
      return text;
    };
    EXPECT_EQ(compact(outcome([&] { return shown(readMultipart(type, body)); })), compact(wanted)) << body;
    for (const size_t piece : {1U, 3U, 7U}) {
      const std::string pieces = outcome([&] {
        RelatedReader reader(type, body.size(), 0, {});
        for (size_t at = 0; at < body.size(); at += piece) reader.feed(body.substr(at, piece));
        return shown(reader.take());
      });
      EXPECT_EQ(compact(pieces), compact(wanted)) << piece << ": " << body;
    }
  }
}

class Attachments : public testsupport::FolderTest {
 protected:
  // What a request brings to the other side, or why there is none.
  std::string sent(const Target& to, const std::string& json, RequestOptions options = {}) {
    return outcome([&]() -> std::string {
      request_ = makeRequest(pictures(), *to.port, *to.operation, readJson(json, "json"), options);
      const std::string wire = request_.toWire();
      std::string type;
      for (const auto& [name, value] : request_.headers) type = name == "Content-Type" ? value : type;
      EXPECT_THAT(wire, HasSubstr("Content-Type: " + type));
      const std::string body = wire.substr(wire.find("\r\n\r\n") + 4);
      EXPECT_THAT(wire, HasSubstr("Content-Length: " + std::to_string(body.size()) + "\r\n"));
      came_ = isMultipart(type) ? readMultipart(type, body) : RelatedParts{type, body, {}};
      const Answer read = readRequest(pictures(), *to.port, *to.operation, came_.root, {}, came_.parts);
      EXPECT_TRUE(read.warnings.empty());
      return callAnswer::toLine(read);
    });
  }
  std::string fileOption(const std::string& name) const {
    return R"({"$file": )" + nlohmann::json(folder_.path(name)).dump() + "}";
  }

  Request request_;
  RelatedParts came_;
};

TEST_F(Attachments, GoBesideTheMessageOrInIt) {
  const std::string bytes("\0\xFF--b\r\n\r", 8), long_text(2000, 'A');
  folder_.write("f", bytes);
  RequestOptions files, mtom;
  files.files = mtom.files = mtom.mtom = true;
  const std::string both =
      R"({"bytes": [)" + fileOption("f") + R"(, "AAAA"], "typed": {"@contentType": "image/png", "$file": )" +
      nlohmann::json(folder_.path("f")).dump() + R"(}, "digits": )" + fileOption("f") + "}";
  const std::string wanted =
      R"({"bytes":["AP8tLWINCg0=","AAAA"],"typed":{"@contentType":"image/png","$":"AP8tLWINCg0="},"digits":"00FF2D2D620D0A0D"})";
  EXPECT_EQ(sent(target("keep"), both, files), wanted);
  EXPECT_TRUE(came_.parts.empty());
  for (const char* port : {"Soap", "Soap12"}) {
    EXPECT_EQ(sent(target("keep", port), both, mtom), wanted);
    ASSERT_EQ(came_.parts.size(), 2U);
    EXPECT_EQ(came_.parts[0].bytes, bytes);
    EXPECT_EQ(came_.parts[0].mediaType, "application/octet-stream");
    EXPECT_EQ(came_.parts[1].mediaType, "image/png");
    EXPECT_THAT(came_.mediaType, HasSubstr("application/xop+xml"));
    EXPECT_THAT(came_.root, Not(HasSubstr("AP8t")));
  }
  EXPECT_EQ(sent(target("keep"), R"({"bytes": [")" + long_text + R"("]})", mtom),
            R"({"bytes":[")" + long_text + R"("]})");
  EXPECT_EQ(came_.parts.size(), 1U);
  EXPECT_EQ(sent(target("keep"), R"({"bytes": ["AAAA"]})", mtom), R"({"bytes":["AAAA"]})");
  EXPECT_TRUE(request_.attachments.empty());
  EXPECT_THAT(sent(target("keep"), R"({"name": )" + fileOption("f") + "}", files), HasSubstr("name: "));
  EXPECT_EQ(sent(target("keep"), R"({"bytes": [)" + fileOption("f") + "]}"),
            "bytes[0]: names a file, which is not allowed here");
  EXPECT_THAT(sent(target("keep"), R"({"bytes": [)" + fileOption("none") + "]}", mtom), Not(HasSubstr("{")));
  EXPECT_EQ(sent(target("keep"), R"({"any": )" + fileOption("f") + "}", files),
            "any.$file: only a value of a simple type can come out of a file");
  EXPECT_EQ(sent(target("keep"), R"({"$file": "f"})", files),
            "$file: only a value of a simple type can come out of a file");
}

TEST_F(Attachments, AreThoseOfTheServicesDescriptionOrAList) {
  folder_.write("f", "cover");
  RequestOptions files;
  files.files = true;
  EXPECT_EQ(
      sent(
          target("publish"),
          R"({"name": "a", "$attachments": {"cover art": "00ff", "notes": {"$": "see", "$mediaType": "text/x"}}})"),
      R"({"$attachments":{"notes":{"$mediaType":"text/x","$":"c2Vl"},"cover art":{"$mediaType":"image/png","$":"AP8="}},"name":"a"})");
  EXPECT_EQ(
      sent(target("publish"), R"({"$attachments": {"notes": "n", "cover art": )" + fileOption("f") + "}}",
           files),
      R"({"$attachments":{"notes":{"$mediaType":"text/plain","$":"bg=="},"cover art":{"$mediaType":"image/png","$":"Y292ZXI="}}})");
  EXPECT_EQ(sent(target("publish"), "{}"), "$attachments.notes: is missing");
  EXPECT_EQ(sent(target("publish"), R"({"$attachments": {"notes": "n", "cover art": "00", "note": "x"}})"),
            "$attachments.note: there is no such attachment; did you mean \"notes\"?");
  EXPECT_EQ(sent(target("publish"), R"({"$attachments": {"notes": "n", "cover art": "0x"}})"),
            "$attachments.cover art: \"0x\" is no hexBinary");
  EXPECT_EQ(sent(target("publish"),
                 R"({"$attachments": {"notes": {"$": "n", "$mediaType": "a\r\nb"}, "cover art": "00"}})"),
            "its media type cannot stand in a header");
  EXPECT_THAT(sent(target("keep"), R"({"$attachments": ["x", "y"]})"), HasSubstr(R"("$":"eA=="},{"id":"2.)"));
  EXPECT_THAT(sent(target("keep"), R"({"see": )" + fileOption("f") + "}", files),
              HasSubstr(R"("$":"Y292ZXI="}],"see":"cid:1.)"));
  files.gzip = true;
  EXPECT_EQ(sent(target("keep"), R"({"$attachments": ["x"]})", files),
            "a request with attachments cannot be compressed");
}

TEST(AnswersWithParts, AreReadWithinLimits) {
  const Target to = target("keep");
  const std::string include = "<x:Include xmlns:x='http://www.w3.org/2004/08/xop/include' href='cid:";
  const auto read = [&](const std::string& inside, uint64_t bytes = 1000) {
    AnswerOptions options;
    options.limits.bytes = bytes;
    const std::vector<MimePart> parts{{"a b", "image/png", "", "", "0123456789", ""},
                                      {"c", "", "", "", "z", ""},
                                      {"large", "", "", "", std::string(500, 'l'), ""}};
    return outcome([&] {
      return callAnswer::toLine(readAnswer(pictures(), *to.port, *to.operation,
                                           "<s:Envelope xmlns:s='http://schemas.xmlsoap.org/soap/envelope/' "
                                           "xmlns:t='urn:pictures'><s:Body><t:picture>" +
                                               inside + "</t:picture></s:Body></s:Envelope>",
                                           options, parts));
    });
  };
  EXPECT_THAT(read("<t:bytes>" + include + "a%20b'/></t:bytes><t:typed>" + include + "c'/></t:typed>"),
              HasSubstr(R"("bytes":["MDEyMzQ1Njc4OQ=="],"typed":{"$":"eg=="})"));
  EXPECT_THAT(read("<t:any>" + include + "c'/></t:any>"), HasSubstr(R"("any":"eg==")"));
  EXPECT_THAT(read("<t:bytes>" + include + "d'/></t:bytes>"),
              HasSubstr("cid:d, which did not come beside it"));
  std::string shared;
  for (int i = 0; i < 20; ++i) shared += "<t:any href='#1'/>";
  std::string many;
  for (int i = 0; i < 6; ++i) many += "<t:bytes>" + include + "large'/></t:bytes>";
  EXPECT_THAT(read(many, 5000), HasSubstr("\"bytes\""));
  EXPECT_THAT(read(many, 2000), HasSubstr("more than 2000 bytes of values"));
  // One text that is referred to again and again.
  EXPECT_THAT(read(shared + "<t:any id='1'>" + std::string(500, 'x') + "</t:any>", 1500),
              HasSubstr("more than 1500 bytes of values"));
}

TEST(Security, StandsInTheMessage) {
  RequestOptions options;
  Security& security = options.security.emplace();
  security.user = "ann & bob";
  security.password = "geh\xC3\xA9im";
  security.isDigest = true;
  security.lifetime = std::chrono::seconds(90);
  security.nonce = std::string("\0\1\2\3\4\5\6\7\x8\x9\xA\xB\xC\xD\xE\xF", 16);
  security.created = std::chrono::sys_days(std::chrono::year(2026) / 11 / 27) + std::chrono::hours(8) +
                     std::chrono::minutes(15);
  const Target to = target("keep");
  Request request = makeRequest(pictures(), *to.port, *to.operation, {}, options);
  for (const char* part : {"Username>ann &amp; bob</", "#PasswordDigest\">sxPNexjlEtI/lDRQygcI8uayHpk=</",
                           "#Base64Binary\">AAECAwQFBgcICQoLDA0ODw==</", "Created>2026-11-27T08:15:00Z</",
                           "Expires>2026-11-27T08:16:30Z</", "Security soap:mustUnderstand=\"1\">"})
    EXPECT_THAT(request.body, HasSubstr(part));
  EXPECT_TRUE(request.secrets.empty());
  security.isDigest = false;
  request = makeRequest(pictures(), *to.port, *to.operation, {}, options);
  EXPECT_THAT(request.body, HasSubstr("#PasswordText\">geh\xC3\xA9im</"));
  EXPECT_THAT(request.secrets, testing::Contains(security.password));
}

TEST(AttachmentNames, LeadNowhereElse) {
  const std::pair<std::string, std::string> rows[] = {{"a.png", "a.png"},
                                                      {"../../etc/passwd", "passwd"},
                                                      {"C:\\x\\y.txt", "y.txt"},
                                                      {"..", ""},
                                                      {".profile", "profile"},
                                                      {"a\nb\x01.t", "ab.t"},
                                                      {"nul.txt", "_nul.txt"},
                                                      {"Com1", "_Com1"},
                                                      {"a:b?", "a_b_"},
                                                      {"x. ", "x"},
                                                      {"\xFF", ""},
                                                      {"\xC3\xA4", "\xC3\xA4"}};
  for (const auto& [given, wanted] : rows) EXPECT_EQ(AttachmentFiles::cleaned(given), wanted) << given;
  EXPECT_LE(AttachmentFiles::cleaned(std::string(99, 'a') + "\xC3\xA4\xC3\xA4").size(), 100U);
}

}  // namespace
