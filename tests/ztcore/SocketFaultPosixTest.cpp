// A program of its own, because it stands between libcurl and the system's sockets: each call of one request
// fails once, in turn.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <filesystem>

#include "tests/support/SocketServer.h"
#include "tests/support/TempFolder.h"
#include "ztcore/CHttp.h"

namespace {

// Of the client's thread only: the server's calls go through.
thread_local int callsLeft = -1;
thread_local int errorOfCall = 0;

bool failsNow() {
  if (callsLeft < 0 || callsLeft-- > 0) return false;
  errno = errorOfCall;
  return true;
}

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// Seen by libcurl in place of the system's.
#pragma GCC visibility push(default)
extern "C" {

int socket(int domain, int type, int protocol) {
  static auto* const real = next<int(int, int, int)>("socket");
  return failsNow() ? -1 : real(domain, type, protocol);
}
int connect(int file, const sockaddr* address, socklen_t length) {
  static auto* const real = next<int(int, const sockaddr*, socklen_t)>("connect");
  return failsNow() ? -1 : real(file, address, length);
}
ssize_t send(int file, const void* bytes, size_t count, int flags) {
  static auto* const real = next<ssize_t(int, const void*, size_t, int)>("send");
  return failsNow() ? -1 : real(file, bytes, count, flags);
}
ssize_t recv(int file, void* bytes, size_t count, int flags) {
  static auto* const real = next<ssize_t(int, void*, size_t, int)>("recv");
  return failsNow() ? -1 : real(file, bytes, count, flags);
}
int poll(pollfd* files, nfds_t count, int timeout) {
  static auto* const real = next<int(pollfd*, nfds_t, int)>("poll");
  return failsNow() ? -1 : real(files, count, timeout);
}
int getsockopt(int file, int level, int name, void* value, socklen_t* length) noexcept {
  static auto* const real = next<int(int, int, int, void*, socklen_t*)>("getsockopt");
  return failsNow() ? -1 : real(file, level, name, value, length);
}
int setsockopt(int file, int level, int name, const void* value, socklen_t length) noexcept {
  static auto* const real = next<int(int, int, int, const void*, socklen_t)>("setsockopt");
  return failsNow() ? -1 : real(file, level, name, value, length);
}
int getsockname(int file, sockaddr* address, socklen_t* length) noexcept {
  static auto* const real = next<int(int, sockaddr*, socklen_t*)>("getsockname");
  return failsNow() ? -1 : real(file, address, length);
}

}  // extern "C"
#pragma GCC visibility pop

namespace {

using testsupport::Connection;
using testsupport::SocketServer;

void serve(Connection& connection) {
  while (!connection.readRequest().empty())
    connection.send("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\ndone");
}

CHttp::ResponseResult attempt(CHttp& http, const std::wstring& url) {
  static const std::string content(200'000, 'x');
  CHttp::ResponseResult result =
      http.OpenConnect(url.c_str(), CHttp::Post, CHttp::Chunked, CHttp::MultipartForm);
  if (result == CHttp::Success) result = http.AddPostSection("a", nullptr, nullptr, nullptr);
  if (result == CHttp::Success) result = http.AppendData(content.data(), content.size());
  if (result == CHttp::Success) result = http.AppendData("\r\n", 2);
  if (result == CHttp::Success) result = http.EndPostSection();
  if (result == CHttp::Success) result = http.CheckResponseHeader(5000);
  return result;
}

void post(CHttp& http, const std::wstring& url) {
  while (attempt(http, url) == CHttp::StartAgain) {
  }
}

size_t openFiles() {
  const std::filesystem::directory_iterator files("/proc/self/fd");
  return static_cast<size_t>(std::distance(begin(files), end(files)));
}

TEST(SocketFault, EachCallFailsOnceAndTheNextRequestSucceeds) {
  const testsupport::ScopedVariable noProxy("no_proxy", "*");
  SocketServer server(std::vector<SocketServer::Script>(2000, serve));
  const std::wstring url = server.url();
  {
    CHttp warm(1);
    post(warm, url);
  }
  const size_t before = openFiles();
  int points = 0, raised = 0;
  for (const int error : {ECONNRESET, EINTR, EMFILE, ENOBUFS}) {
    for (int call = 0;; ++call, ++points) {
      CHttp http(1);
      http.SetTimeouts(5000, 5000);
      callsLeft = call;
      errorOfCall = error;
      try {
        post(http, url);
      } catch (const CHttpException& e) {
        ++raised;
        EXPECT_NE(e.getKind(), CHttpException::Kind::Status) << e.what();
      }
      const bool wasReached = callsLeft < 0;
      callsLeft = -1;
      if (!wasReached) break;
      EXPECT_NO_THROW(post(http, url)) << "call " << call << ", error " << error;
    }
  }
  // The server's own end of the last connection may live a moment longer.
  for (int i = 0; i < 200 && openFiles() > before; ++i) poll(nullptr, 0, 10);
  EXPECT_LE(openFiles(), before);
  std::printf("%d points tried, %d raised\n", points, raised);
  EXPECT_GT(points, 40);
  EXPECT_GT(raised, 10);
}

}  // namespace
