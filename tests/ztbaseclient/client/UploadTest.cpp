#include <gmock/gmock.h>

#include "tests/support/Bytes.h"
#include "tests/support/Certificates.h"
#include "tests/support/SocketServer.h"
#include "tests/support/WebServer.h"
#include "ztbaseclient/client/ErrorPage.h"
#include "ztbaseclient/client/ztSoapUtils.h"
#include "ztcore/CHttpException.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using namespace testsupport;

const char* const wrapped = "\nztSoapUtils::UploadViaCGI: Corvanta exception caught";

std::string hexOf(const std::string& bytes) {
  std::string text = hex(bytes);
  std::erase(text, ' ');
  return text;
}

struct Names {
  const wchar_t* fileName = L"name";
  const wchar_t* jobId = nullptr;
  const wchar_t* sessionId = L"s";
};

class Upload : public testing::Test {
 protected:
  void SetUp() override {
    if (!hasShell()) GTEST_SKIP() << "no web server is here";
  }

  // The message of the exception, empty for none.
  static std::string upload(const std::string& file, const std::wstring& url, const Names& names = {},
                            bool flag = true) {
    try {
      ztSoapUtils::UploadViaCGI(tovin::utf8ToWide(file).c_str(), names.fileName, names.jobId, names.sessionId,
                                flag, url.c_str());
      return {};
    } catch (const tovin::Exception& e) {
      return tovin::wideToUtf8(e.getMessage());
    }
  }
  static std::string upload(const std::string& file, const WebServer& server, const Names& names = {}) {
    return upload(file, tovin::utf8ToWide(server.url()), names);
  }

  // The report's line of a file that was sent.
  static std::string fileLine(const std::string& path, const std::string& sizeAndDigest) {
    return "file " + hexOf(path) + " application/octet-stream deflate " + sizeAndDigest + "\n";
  }

  // Writes a file that cannot be compressed; the end of its line in the report, its size and digest.
  std::string writeRandom(const std::string& name, size_t size) const {
    const std::string path = shellPath(folder_.path(name)), count = std::to_string(size);
    runShell("head -c " + count + " /dev/urandom >'" + path + "' && sha256sum <'" + path + "' >'" + path +
             ".digest'");
    return count + " " + folder_.read(name + ".digest").substr(0, 64);
  }

  // No proxy of the machine gets any of this.
  ScopedVariable noProxy_{"no_proxy", "*"};
  TempFolder folder_;
};

TEST_F(Upload, ServerReceivesTheFormInItsOrder) {
  const std::string file = folder_.write(strangeName.plain, std::string("some\0bytes\r\n--", 14));
  for (bool flag : {true, false}) {
    const WebServer server;
    const Names names = {L"q\"\r\n\xE9\x20AC", L"j 1", L"s&2"};
    ASSERT_EQ(upload(file, tovin::utf8ToWide(server.url()), names, flag), "");
    EXPECT_EQ(server.report(),
              "FileName " + hexOf("q\"\r\n\xC3\xA9\xE2\x82\xAC") + "\nSID " + hexOf("s&2") + "\njobid " +
                  hexOf("j 1") + "\n" +
                  fileLine(folder_.path(strangeName.inHeader),
                           "14 3802c1ffccf13488ec07fa1ab3b8908f8d54589a644605c27c2fcbc0fe66845a"));
  }
}

TEST_F(Upload, ConsentIsAskedForWithoutTheFlag) {
  const std::string file = folder_.write("a", "x");
  for (bool flag : {true, false}) {
    std::string head;
    SocketServer server({[&](Connection& connection) {
      head = connection.readHead();
      if (!flag) connection.send("HTTP/1.1 100 Continue\r\n\r\n");
      connection.readBody();
      connection.send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    }});
    EXPECT_EQ(upload(file, server.url(), {}, flag), "");
    EXPECT_EQ(head.find("Expect: 100-continue") == head.npos, flag) << head;
  }
}

TEST_F(Upload, JobIsLeftOutOrEmpty) {
  const WebServer server;
  const std::string file = folder_.write("empty", "");
  const std::string line =
      fileLine(file, "0 e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  ASSERT_EQ(upload(file, server, {nullptr, nullptr, nullptr}), "");
  EXPECT_EQ(server.report(), "FileName \nSID \n" + line);
  ASSERT_EQ(upload(file, server, {L"", L"", L""}), "");
  EXPECT_EQ(server.report(), "FileName \nSID \njobid \n" + line);
}

TEST_F(Upload, MemoryDoesNotGrowWithTheFile) {
  const WebServer server;
  const std::string small = folder_.write("small", std::string(1'000'000, 'x'));
  ASSERT_EQ(upload(small, server), "");
  const std::string sparse = folder_.write("sparse", "");
  std::filesystem::resize_file(sparse, uintmax_t{1} << 28);
  const std::string random = folder_.path("random");
  const std::string digest = writeRandom("random", 1 << 26);
  const long before = peakKilobytes();
  ASSERT_EQ(upload(sparse, server), "");
  EXPECT_THAT(server.report(),
              EndsWith(fileLine(
                  sparse, "268435456 a6d72ac7690f53be6ae46ba88506bd97302a093f7108472bd9efc3cefda06484")));
  ASSERT_EQ(upload(random, server), "");
  EXPECT_THAT(server.report(), EndsWith(fileLine(random, digest)));
  EXPECT_LT(peakKilobytes() - before, 8 << 10);
}

TEST_F(Upload, RefusalIsToldInTheServersWords) {
  const WebServer server;
  const std::string file = folder_.write("a", "x");
  EXPECT_EQ(upload(file, tovin::utf8ToWide(server.url("?refuse=Quota%20%26amp%3B%20more&x=1"))),
            "Unable to upload " + file + ": Quota & more");
}

TEST_F(Upload, FailureWithoutReasonKeepsItsOwnMessage) {
  const std::string file = folder_.write("a", "x");
  EXPECT_EQ(upload(folder_.path("none"), WebServer()),
            "Unable to open file " + folder_.path("none") + wrapped);
  EXPECT_EQ(upload(folder_.path(), WebServer()), "Unable to open file " + folder_.path() + wrapped);
  EXPECT_THAT(upload(file, L"no URL"), AllOf(StartsWith("Malformed URL no URL: "), EndsWith(wrapped)));
  EXPECT_THAT(
      upload(file, L"http://127.0.0.1:" + std::to_wstring(freePort())),
      AllOf(StartsWith("The request to http://127.0.0.1:"), HasSubstr(" failed: "), EndsWith(wrapped)));
  SocketServer halfway({[](Connection& connection) { connection.readHead(); }});
  EXPECT_THAT(upload(file, halfway.url()), AllOf(StartsWith("The request to "), EndsWith(wrapped)));
  SocketServer silent({[](Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\n\r\n");
  }});
  EXPECT_EQ(upload(file, silent.url()), std::string("The server answered 403 Forbidden") + wrapped);
  EXPECT_THROW(ztSoapUtils::UploadViaCGI(nullptr, nullptr, nullptr, nullptr, true, nullptr),
               tovin::Exception);
}

TEST_F(Upload, NewStartSendsTheWholeFileAgain) {
  const WebServer server;
  const std::string location =
      "HTTP/1.1 307 Temporary Redirect\r\nContent-Length: 0\r\nLocation: " + server.url() + "\r\n\r\n";
  SocketServer early({[&](Connection& connection) {
    connection.readHead();
    connection.send(location);
    connection.readBody();
  }});
  const std::string file = folder_.path("random");
  const std::string digest = writeRandom("random", 5'000'000);
  ASSERT_EQ(upload(file, early.url()), "");
  EXPECT_EQ(server.report(), "FileName 6E616D65\nSID 73\n" + fileLine(file, digest));
}

TEST_F(Upload, ChallengesAreAnsweredFromTheUrl) {
  const std::string file = folder_.write("file", "x"), users = folder_.write("users", "al:s3:c\n");
  for (const std::string& method : answeredChallenges()) {
    const WebServer server(
        "server.modules += (\"mod_auth\", \"mod_authn_file\")\nauth.backend = \"plain\"\n"
        "auth.backend.plain.userfile = \"" +
        testsupport::shellPath(users) + "\"\nauth.require = (\"\" => (\"method\" => \"" + method +
        "\", \"realm\" => \"r\", \"require\" => \"valid-user\"))\n");
    const std::wstring url = tovin::utf8ToWide(server.url()).insert(std::strlen("http://"), L"al:WRONG@");
    EXPECT_THAT(upload(file, url), HasSubstr("<title>401 Unauthorized"));
    EXPECT_EQ(server.report(), "");
    EXPECT_EQ(upload(file, std::wstring(url).replace(url.find(L"WRONG"), 5, L"s3:c")), "") << method;
    EXPECT_THAT(server.report(),
                HasSubstr(" 1 2d711642b726b04401627ca9fbac32f5c8530fb1903cc4db02258717921a4881"));
  }
}

TEST_F(Upload, ProgressCountsTheFile) {
  const WebServer server;
  const std::string file = folder_.write("a", std::string(300'000, 'x'));
  std::vector<uint64_t> steps;
  ztSoapUtils::UploadViaCGI(tovin::utf8ToWide(file).c_str(), L"n", nullptr, L"s", true,
                            tovin::utf8ToWide(server.url()).c_str(), [&](uint64_t done, uint64_t length) {
                              if (done == 0) return;  // the server is waited for
                              if (steps.empty() || steps.back() != done) steps.push_back(done);
                              EXPECT_EQ(length, 300'000u);
                            });
  EXPECT_EQ(steps, (std::vector<uint64_t>{131'072, 262'144, 300'000}));
}

// Between two pieces and while the server is waited for.
TEST_F(Upload, ProgressGivesItUp) {
  const std::wstring file = tovin::utf8ToWide(folder_.write("a", "x"));
  const auto upload = [&](const std::wstring& url, const ztSoapUtils::UploadProgress& progress) {
    ztSoapUtils::UploadViaCGI(file.c_str(), L"n", nullptr, L"s", true, url.c_str(), progress);
  };
  const auto hold = [](SocketServer& server) {
    return [&](Connection& connection) { connection.hold(server.stopping()); };
  };
  bool waiting = false;
  const auto afterThePiece = [&](uint64_t done, uint64_t) { return !std::exchange(waiting, done > 0); };
  for (int times : {1, 2}) {
    SocketServer* own = nullptr;
    SocketServer server({[&](Connection& connection) { hold (*own)(connection); }});
    own = &server;
    waiting = times == 1;
    try {
      upload(server.url(), afterThePiece);
      ADD_FAILURE() << "not given up";
    } catch (const CHttpException& e) {
      EXPECT_EQ(e.getKind(), CHttpException::Kind::Cancelled);
    }
    EXPECT_THROW(upload(server.url(), [](uint64_t, uint64_t) { throw 7; }), int);
  }
}

// What a program tells apart.
TEST_F(Upload, FailuresHaveAKind) {
  using Kind = CHttpException::Kind;
  const std::tuple<const char*, Kind, long, const char*> rows[] = {
      {"HTTP/1.1 403 Forbidden\r\nContent-Length: 5\r\n\r\nquota", Kind::Status, 403, ": quota"},
      {"HTTP/1.1 200 OK\r\nContent-Le", Kind::Connection, 200, "ends in its head"},
      {"HTTP/1.1 307 Redirect\r\nContent-Length: 0\r\nLocation: ftp://127.0.0.1/\r\n\r\n", Kind::Redirection,
       307, "Malformed URL ftp://"},
      {"", Kind::Connection, 0, " failed: "},
      {nullptr, Kind::Name, 0, " failed: "}};
  const std::wstring file = tovin::utf8ToWide(folder_.write("a", "x"));
  for (const auto& [answer, kind, status, words] : rows) {
    SocketServer server({[bytes = answer](Connection& connection) {
      connection.readRequest();
      connection.send(bytes);
    }});
    const std::wstring url = answer ? server.url() : L"http://nowhere.invalid/";
    try {
      ztSoapUtils::UploadViaCGI(file.c_str(), L"n", nullptr, L"s", true, url.c_str());
      ADD_FAILURE() << "no failure";
    } catch (const CHttpException& e) {
      EXPECT_EQ(e.getKind(), kind) << e.what();
      EXPECT_EQ(e.getStatus(), status) << e.what();
      EXPECT_THAT(e.what(), HasSubstr(words));
    }
  }
}

class UploadTls : public Upload {
 protected:
  // An upload to a server of that certificate, by a client that trusts the authority.
  std::string uploadTo(const std::string& certificate, const std::string& configuration = {}) const {
    const ScopedVariable trusted("SSL_CERT_FILE", certificates_.authority());
    const WebServer server(certificates_.serverOf(certificate) + configuration, "localhost");
    const std::string result = upload(folder_.write("a", "x"), server);
    EXPECT_EQ(result.empty(), !server.report().empty());
    return result;
  }

  Certificates certificates_;
};

TEST_F(UploadTls, OnlyACertificateThatVerifiesIsTrusted) {
  EXPECT_EQ(uploadTo("good"), "");
  // In the words of either system's TLS.
  EXPECT_THAT(uploadTo("self"), AnyOf(HasSubstr("failed: SSL certificate problem"),
                                      HasSubstr("failed: schannel: CertGetCertificateChain trust error")));
  EXPECT_THAT(uploadTo("wrong"),
              AnyOf(HasSubstr("failed: SSL: no alternative certificate subject name matches"),
                    HasSubstr("failed: schannel: CertGetNameString() failed to match connection hostname")));
  EXPECT_EQ(uploadTo("good",
                     "server.modules += (\"mod_redirect\")\nurl.redirect-code = 307\n"
                     "url.redirect = (\"\" => \"http://127.0.0.1:1/\")\n"),
            std::string("The server redirects from HTTPS to http://127.0.0.1:1/") + wrapped);
}

TEST(ErrorPage, ReasonIsTheFirstParagraph) {
  const std::pair<const wchar_t*, const wchar_t*> rows[] = {
      {L"<html><body><p>Quota exceeded</p></body></html>", L"Quota exceeded"},
      {L"<p>a &lt;b&gt;</p>", L"a <b>"},
      {L"plain &amp; simple", L"plain & simple"},
      {L"", L""},
      {L"<p></p>rest", L""},
      {L"<p>never closed", L"<p>never closed"},
      {L"</p>before<p>after", L"</p>before<p>after"},
      {L"</p><p>x</p>", L"x"},
      {L"<p>a<p>b</p></p>", L"a<p>b"},
      {L"<P>x</P>", L"<P>x</P>"},
      {L"<p class='x'>a</p><p>b</p>", L"b"},
      {L"<p>&lt;/p>x</p>", L"</p>x"}};
  for (const auto& [page, reason] : rows) EXPECT_EQ(ErrorPage::reasonIn(page), reason);
}

}  // namespace
