#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <set>

#include "tests/support/SocketServer.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Threads.h"
#include "tovinCore/Utf8.h"
#include "ztclient/session/MockServer.h"
#include "ztservice/call/Calls.h"
#include "ztservice/call/Client.h"

using namespace ztservice::call;
using testsupport::Connection;
using testsupport::SocketServer;

namespace {

const ztservice::Service& shop() {
  static const ztservice::Service service = ztservice::load(ZTB_TEST_DATA "/call/shop.wsdl");
  return service;
}

std::string http(const std::string& head, const std::string& body, const std::string& type = "text/xml") {
  return "HTTP/1.1 " + head + "\r\nContent-Type: " + type +
         "\r\nContent-Length: " + std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" + body;
}

std::string envelope(const std::string& body) {
  return "<s:Envelope xmlns:s='http://schemas.xmlsoap.org/soap/envelope/'><s:Body>" + body +
         "</s:Body></s:Envelope>";
}

const std::string receipt = envelope("<r:receipt xmlns:r='urn:shop'><r:number>5</r:number></r:receipt>");
const std::string fault =
    envelope("<s:Fault><faultcode>s:Server</faultcode><faultstring>no</faultstring></s:Fault>");

SocketServer::Script answering(const std::string& bytes) {
  return [bytes](Connection& connection) {
    connection.readRequest();
    connection.send(bytes);
  };
}

RequestOptions to(const SocketServer& server) { return {tovin::wideToUtf8(server.url(L"/soap")), true}; }

// The number of the receipt, the reason of a fault, or why there is neither.
std::string called(Client& client, const RequestOptions& options) {
  try {
    const Answer answer = client.call("send", {}, options);
    return answer.fault ? "fault " + answer.fault->reason : answer.values.find("number")->text();
  } catch (const tovin::Exception& e) {
    return tovin::wideToUtf8(e.getMessage());
  }
}

TEST(Calls, TellWhatCameWhereItIsNoAnswer) {
  struct Row {
    std::string bytes;
    const char* wanted;
  };
  for (const Row& row : std::vector<Row>{
           {http("200 OK", receipt), "5"},
           {http("200 OK", receipt, "application/soap+xml; charset=utf-8"), "5"},
           {http("500 Internal Server Error", fault), "fault no"},
           {http("200 OK", fault), "fault no"},
           {http("500 Internal Server Error", receipt),
            "the server answers 500: <s:Envelope "
            "xmlns:s='http://schemas.xmlsoap.org/soap/envelope/'><s:Body><r:receipt "
            "xmlns:r='urn:shop'><r:number>5</r:num…"},
           {http("502 Bad Gateway", "\n<html>\n<b>no</b>", "text/html"), "the server answers 502: <html>"},
           {http("200 OK", "<html>hello</html>", "text/html"),
            "the server answers 200 with text/html: <html>hello</html>"},
           {http("200 OK", "", "text/html"), "the server answers 200 with text/html"},
           {http("404 Not Found", "", "text/xml"), "the server answers 404"},
           {http("200 OK", receipt.substr(0, 90)), "unclosed token"},
           {"HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nContent-Length: 999\r\n\r\n" + receipt,
            "transfer closed with 841 bytes remaining to read"},
           {http("302 Found\r\nLocation: file:///etc/passwd", ""),
            "redirects to file:///etc/passwd, which is neither HTTP nor HTTPS"},
           {http("307 Moved\r\nLocation: http://other.invalid/", ""),
            "redirects to http://other.invalid/, which is another server"},
           {http("303 See\r\nLocation: /x", ""), "redirects to "},
           {"", "Empty reply from server"},
       }) {
    const SocketServer server({answering(row.bytes)});
    Client client(shop());
    EXPECT_THAT(called(client, to(server)), testing::StartsWith(row.wanted)) << row.bytes;
  }
}

TEST(Calls, TakeNoMoreThanIsAllowed) {
  const SocketServer server(
      {answering(http("200 OK", receipt + std::string(5000, ' '))), [](Connection& connection) {
         connection.readRequest();
         std::this_thread::sleep_for(std::chrono::milliseconds(500));
       }});
  ClientOptions options;
  options.answer.limits.bytes = 4000;
  options.transfer = std::chrono::milliseconds(300);
  Client client(shop(), options);
  EXPECT_EQ(called(client, to(server)), "more than the 4000 bytes that are allowed");
  EXPECT_THAT(called(client, to(server)), testing::HasSubstr("timed out"));
}

TEST(Calls, FollowARedirectionWithTheRequestAndTellNoSecrets) {
  std::vector<std::string> requests;
  const auto keeping = [&requests](const std::string& bytes) {
    return [&requests, bytes](Connection& connection) {
      requests.push_back(connection.readRequest());
      connection.send(bytes);
    };
  };
  const SocketServer server({keeping(http("307 Moved\r\nLocation: /else\r\nSet-Cookie: a=secret", "")),
                             keeping(http("200 OK", receipt))});
  ClientOptions options;
  options.bearer = "secret";
  std::string traced;
  options.trace = [&traced](char direction, std::string_view bytes) {
    traced.append(1, direction).append(bytes);
  };
  Client client(shop(), options);
  EXPECT_EQ(called(client, to(server)), "5");
  ASSERT_EQ(requests.size(), 2U);
  EXPECT_THAT(requests[1], testing::HasSubstr("POST /else HTTP/1.1\r\n"));
  EXPECT_THAT(requests[1], testing::HasSubstr("Authorization: Bearer secret\r\n"));
  EXPECT_THAT(requests[1], testing::HasSubstr("Cookie: a=secret\r\n"));
  EXPECT_THAT(requests[1], testing::HasSubstr("<soap:Body><ns1:order/></soap:Body>"));
  EXPECT_THAT(traced, testing::HasSubstr(">Authorization: (hidden)\r\n"));
  EXPECT_THAT(traced, testing::HasSubstr("<Set-Cookie: (hidden)\r\n"));
  EXPECT_THAT(traced, testing::Not(testing::HasSubstr("secret")));
}

TEST(Calls, AreRefusedBeforeAnythingIsSent) {
  Client client(shop());
  EXPECT_EQ(called(client, {"ftp://x", true}), "ftp://x is no address of HTTP or HTTPS");
  EXPECT_EQ(called(client, {"http://a\n", true}), "the address has control characters");
  try {
    client.call("snd", {});
    ADD_FAILURE();
  } catch (const ztservice::Error& e) {
    EXPECT_EQ(tovin::wideToUtf8(e.getMessage()), "no operation \"snd\"; did you mean \"send\"?");
  }
}

// A picture that comes beside the answer, in pieces.
SocketServer::Script answeringInParts(const std::string& body) {
  return [body](Connection& connection) {
    connection.readRequest();
    const std::string bytes = http("200 OK", body, "multipart/related; boundary=b");
    for (size_t at = 0; at < bytes.size(); at += 50) connection.send(bytes.substr(at, 50));
  };
}

TEST(Calls, TakeWhatComesBesideAnAnswerIntoMemoryOrFiles) {
  const testsupport::TempFolder folder;
  const std::string picture(300, 'p');
  const std::string body =
      "--b\r\n\r\n" + receipt + "\r\n--b\r\nContent-ID: <1>\r\n\r\n" + picture + "\r\n--b--\r\n";
  const std::string cut = body.substr(0, body.size() - 20);
  const SocketServer server({answeringInParts(body), answeringInParts(body), answeringInParts(cut),
                             answeringInParts(body), answeringInParts(body)});
  ClientOptions options;
  const std::string file = folder.path("picture");
  const auto call = [&] {
    Client client(shop(), options);
    try {
      const Answer answer = client.call("send", {}, to(server));
      EXPECT_EQ(answer.values.find("number")->text(), "5");
      return answer.attachments.at(0).file.empty() ? answer.attachments.at(0).bytes : folder.read("picture");
    } catch (const tovin::Exception& e) {
      return tovin::wideToUtf8(e.getMessage());
    }
  };
  EXPECT_EQ(call(), picture);
  options.fileFor = [&file](const MimePart& part) { return part.id == "1" ? file : std::string(); };
  EXPECT_EQ(call(), picture);
  // What does not come whole leaves no file, what is there stays as it is.
  std::filesystem::remove(file);
  EXPECT_EQ(call(), "its parts are cut off");
  EXPECT_FALSE(std::filesystem::exists(file));
  options.answer.limits.fileBytes = 200;
  EXPECT_EQ(call(), "more bytes than are allowed");
  EXPECT_FALSE(std::filesystem::exists(file));
  folder.write("picture", "mine");
  EXPECT_THAT(call(), testing::Not(picture));
  EXPECT_EQ(folder.read("picture"), "mine");
}

TEST(Calls, SendWhatGoesBesideThemOnceMoreAndTellOtherServersNoSecrets) {
  std::vector<std::string> requests;
  const auto keeping = [&requests](const std::string& bytes) {
    return [&requests, bytes](Connection& connection) {
      requests.push_back(connection.readRequest());
      connection.send(bytes);
    };
  };
  const SocketServer other({keeping(http("200 OK", receipt)), keeping(http("200 OK", receipt))});
  const std::string elsewhere = "307 Moved\r\nLocation: " + tovin::wideToUtf8(other.url(L"/else"));
  const SocketServer server({keeping(http("307 Moved\r\nLocation: /again", "")), keeping(http(elsewhere, "")),
                             keeping(http(elsewhere, ""))});
  ClientOptions options;
  options.redirectsAnywhere = true;
  options.prepare = [](Request& request) {
    request.headers.emplace_back("X-Session", "secret");
    request.headers.emplace_back("Authorization", "own");
    request.secrets.emplace_back("secret");
  };
  Client client(shop(), options);
  const testsupport::TempFolder folder;
  RequestOptions files = to(server);
  files.files = true;
  Value values;
  Value::List list(1);
  list[0]["$file"] = folder.write("f", std::string(100'000, 'f'));
  values["$attachments"] = Value(std::move(list));
  EXPECT_EQ(client.call("send", values, files).values.find("number")->text(), "5");
  ASSERT_EQ(requests.size(), 3U);
  for (const std::string& request : requests)
    EXPECT_THAT(request, testing::HasSubstr(std::string(100'000, 'f') + "\r\n--"));
  EXPECT_THAT(requests[1], testing::HasSubstr("X-Session: secret\r\nAuthorization: own\r\n"));
  EXPECT_THAT(requests[2],
              testing::Not(testing::AnyOf(testing::HasSubstr("secret"), testing::HasSubstr("own\r"))));
  RequestOptions named = to(server);
  named.security.emplace().user = "ann";
  named.security->password = "pass";
  EXPECT_THAT(called(client, named), testing::HasSubstr("which the password in the message is not for"));
  EXPECT_EQ(requests.size(), 4U);
}

TEST(Calls, MayBeOnTheirWayTogetherWithoutThreads) {
  MockServer mock(shop(), {{"send", R"({"number": 7})"}}, 0);
  std::atomic<bool> goesOn = true;
  std::thread serving([&] { mock.run([&] { return goesOn.load(); }, [](const std::string&) {}); });
  const SocketServer failing({answering(http("307 Moved\r\nLocation: " + mock.url(), "")), answering("")});
  ClientOptions options;
  options.redirectsAnywhere = true;
  Client client(shop(), options);
  const Target send = requireOperation(shop(), "send");
  std::multiset<std::string> told;
  {
    Calls calls(client, 3);
    for (int i = 0; i < 12; ++i) {
      const bool isAsked = i != 4 && i != 8;
      Request request = makeRequest(shop(), *send.port, *send.operation, {},
                                    isAsked ? RequestOptions{mock.url(), true} : to(failing));
      calls.add(std::move(request), [&](Calls::Outcome outcome) {
        try {
          if (outcome.error) std::rethrow_exception(outcome.error);
          told.insert(client.read(*send.port, *send.operation, outcome.answer).values.find("number")->text());
        } catch (const tovin::Exception& e) {
          told.insert(tovin::wideToUtf8(e.getMessage()));
        }
      });
      EXPECT_LE(calls.open(), 3U);
    }
    calls.finish();
    EXPECT_EQ(calls.open(), 0U);
    EXPECT_FALSE(calls.wait(std::chrono::seconds(1)));
    calls.add(makeRequest(shop(), *send.port, *send.operation, {}, to(failing)),
              [](const Calls::Outcome&) { ADD_FAILURE(); });
  }
  goesOn = false;
  serving.join();
  EXPECT_EQ(told.count("7"), 11U);
  EXPECT_EQ(told.count("Empty reply from server"), 1U);
}

TEST(Calls, MayComeFromSeveralThreads) {
  MockServer server(shop(), {{"send", R"({"number": 7})"}}, 0);
  std::atomic<bool> goesOn = true;
  std::atomic<int> told = 0;
  std::thread serving([&] {
    server.run([&] { return goesOn.load(); }, [&](const std::string& line) { told += line == "send: 200"; });
  });
  Client client(shop());
  std::atomic<int> answered = 0;
  testsupport::inThreads(4, [&](int) {
    for (int i = 0; i < 5; ++i) answered += called(client, {server.url(), true}) == "7";
  });
  goesOn = false;
  serving.join();
  EXPECT_EQ(answered, 20);
  EXPECT_EQ(told, 20);
}

}  // namespace
