// A program of its own, because it stands between the libraries, libcurl too, and the system: each call of an
// operation fails once, in turn, or moves one byte only.
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <functional>
#include <utility>

#include "tests/support/Bytes.h"
#include "tests/support/SocketServer.h"
#include "tests/support/TempFolder.h"
#include "tovin/Constants.h"
#include "tovinCore/platform/WholeFile.h"
#include "ztbaseclient/tools/CConsoleReader.h"
#include "ztbaseclient/tools/CDiffFiles.h"
#include "ztbaseclient/wsdl/CSchema.h"
#include "ztbaseclient/wsdl/CWsdlParser.h"
#include "ztcore/CHttp.h"
#include "ztcore/ztRegistry.h"
#include "ztcore/ztServerConfig.h"

namespace {

// What happens at a call: an error, or for reads and writes a single byte. In the client's thread only: a
// server's calls go through.
constexpr int oneByte = -1;
thread_local int callsLeft = -1;
thread_local int eventOfCall = 0;
thread_local bool wasShort = false;

// Whether the call at hand is the one.
bool isMet() { return callsLeft >= 0 && callsLeft-- == 0; }

bool failsNow() {
  if (!isMet() || eventOfCall == oneByte) return false;
  errno = eventOfCall;
  return true;
}

// How many bytes may move: none for a call that fails.
size_t allowed(size_t count) {
  if (!isMet()) return count;
  wasShort = eventOfCall == oneByte;
  if (wasShort) return count > 0 ? 1 : 0;
  errno = eventOfCall;
  return 0;
}

// The system's own function behind the one of the same name here.
template <class Function>
Function* next(Function*, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

#define ZTB_NEXT(name) static auto* const real = next(&::name, #name)
// A call that fails gives -1.
#define ZTB_FAILING(result, name, parameters, arguments, ...) \
  result name parameters __VA_ARGS__ {                        \
    ZTB_NEXT(name);                                           \
    return failsNow() ? -1 : real arguments;                  \
  }

// Seen by the libraries in place of the system's.
#pragma GCC visibility push(default)
extern "C" {

ZTB_FAILING(int, socket, (int domain, int type, int protocol), (domain, type, protocol), noexcept)
ZTB_FAILING(int, connect, (int file, const sockaddr* address, socklen_t length), (file, address, length))
ZTB_FAILING(ssize_t, send, (int file, const void* bytes, size_t count, int flags),
            (file, bytes, count, flags))
ZTB_FAILING(ssize_t, recv, (int file, void* bytes, size_t count, int flags), (file, bytes, count, flags))
ZTB_FAILING(int, poll, (pollfd * files, nfds_t count, int timeout), (files, count, timeout))
ZTB_FAILING(int, getsockopt, (int file, int level, int name, void* value, socklen_t* length),
            (file, level, name, value, length), noexcept)
ZTB_FAILING(int, setsockopt, (int file, int level, int name, const void* value, socklen_t length),
            (file, level, name, value, length), noexcept)
ZTB_FAILING(int, getsockname, (int file, sockaddr* address, socklen_t* length), (file, address, length),
            noexcept)
ZTB_FAILING(off_t, lseek, (int file, off_t place, int from), (file, place, from), noexcept)
ZTB_FAILING(int, fstat, (int file, struct stat* facts), (file, facts), noexcept)
ZTB_FAILING(int, fsync, (int file), (file))
ZTB_FAILING(int, mkstemp, (char* name), (name))
ZTB_FAILING(int, rename, (const char* from, const char* to), (from, to), noexcept)

int open(const char* name, int flags, ...) {
  ZTB_NEXT(open);
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return failsNow() ? -1 : real(name, flags, mode);
}
ssize_t read(int file, void* bytes, size_t count) {
  ZTB_NEXT(read);
  const size_t some = allowed(count);
  return some == 0 && count > 0 ? -1 : real(file, bytes, some);
}
ssize_t write(int file, const void* bytes, size_t count) {
  ZTB_NEXT(write);
  const size_t some = allowed(count);
  return some == 0 && count > 0 ? -1 : real(file, bytes, some);
}
// The file is closed all the same, as the system does it.
int close(int file) {
  ZTB_NEXT(close);
  const bool fails = failsNow();
  const int result = real(file);
  if (fails) errno = eventOfCall;
  return fails ? -1 : result;
}

}  // extern "C"
#pragma GCC visibility pop

namespace {

using namespace testsupport;
using tovin::WideString;

size_t openFiles() {
  const std::filesystem::directory_iterator files("/proc/self/fd");
  return static_cast<size_t>(std::distance(begin(files), end(files)));
}

class FileFault : public testing::Test {
 protected:
  // An operation gives its right answer, or raises an exception of the family and then gives it.
  void sweep(const char* what, const std::function<std::string()>& act) {
    const std::string right = act();
    const size_t before = openFiles();
    for (const int event : {EIO, EINTR, ENOSPC, EMFILE, oneByte}) {
      for (int call = 0;; ++call, ++points_) {
        SCOPED_TRACE(std::string(what) + ", event " + std::to_string(event) + " at call " +
                     std::to_string(call));
        callsLeft = call;
        eventOfCall = event;
        wasShort = false;
        try {
          const std::string answer = act();
          const bool reached = callsLeft < 0;
          callsLeft = -1;
          EXPECT_EQ(answer, right);
          if (!reached) break;
        } catch (const tovin::Exception& e) {
          callsLeft = -1;
          EXPECT_FALSE(wasShort) << "a short piece is no failure: " << e.what();
        }
        EXPECT_EQ(act(), right) << "behind it";
        EXPECT_EQ(openFiles(), before);
      }
    }
  }
  ~FileFault() override { std::printf("%d points tried\n", points_); }

  std::wstring write(const std::string& name, const std::string& bytes) const {
    return tovin::utf8ToWide(folder_.write(name, bytes));
  }

  TempFolder folder_;
  int points_ = 0;
};

TEST_F(FileFault, SettingsAreReadAndReplacedOrAsTheyWere) {
  const ScopedVariable place("XDG_CONFIG_HOME", folder_.path());
  const ScopedVariable config("DRAVOLIN_SERVER_CONFIG", folder_.write("config", "a=mine\n"));
  const auto read = [] {
    ztRegistry registry;
    WideString value;
    if (registry.Connect(ztRegistry::CurrentUser) && registry.Open(L"key")) registry.GetValue(L"n", value);
    return tovin::wideToUtf8(value.view());
  };
  const auto change = [](const wchar_t* value) {
    ztRegistry registry;
    registry.Connect(ztRegistry::CurrentUser);
    registry.Create(L"key");
    registry.SetValue(L"n", value);
  };
  change(L"one");
  sweep("read", read);
  sweep("change", [&] {
    change(L"two");
    return std::string();
  });
  EXPECT_EQ(read(), "two");
  sweep("configuration", [] {
    WideString value;
    ztServerConfig::GetParameter(L"a", value);
    return tovin::wideToUtf8(value.view());
  });
  const std::wstring whole = write("whole", "before");
  sweep("replaceFile", [&] {
    if (!tovin::platform::replaceFile(whole.c_str(), "behind")) throw tovin::Exception(L"not replaced");
    const int left = std::exchange(callsLeft, -1);  // the test's own reading does not fail
    std::string bytes = folder_.read("whole");
    callsLeft = left;
    return bytes;
  });
}

TEST_F(FileFault, ComparisonsAndLogsMissNothing) {
  const std::wstring file1 = write("1", "a 1.00001\nb\n"), file2 = write("2", "a 1.00002\nb\n");
  const std::wstring bytes1 = write("3", std::string("\0\1", 2)), bytes2 = write("4", std::string("\0\2", 2));
  const auto outcome = [](const std::wstring& a, const std::wstring& b) {
    try {
      CDiffFiles().CompareFiles(a.c_str(), b.c_str(), 4);
      return std::string("equal");
    } catch (const tovin::DiffWarningException& e) {
      return std::string(e.what());
    } catch (const tovin::DiffErrorException& e) {
      return std::string(e.what());
    }
  };
  sweep("text", [&] { return outcome(file1, file2); });
  sweep("bytes", [&] { return outcome(bytes1, bytes2); });
  const std::wstring log =
      std::wstring(tovin::DRV_ConsoleEntryBegin) + L"\nname\tv\n" + tovin::DRV_ConsoleEntryEnd;
  const std::wstring logName = write("log", tovin::wideToUtf8(log + L"\n"));
  sweep("log", [&] {
    CConsoleReader reader(logName.c_str(), 0);
    if (!reader.HasSource()) throw tovin::Exception(L"no source");
    CConsoleEntry entry;
    const bool found = reader.GetNextEntry(entry);
    return found ? tovin::wideToUtf8(entry.FindValue(L"name")) : std::string();
  });
}

TEST_F(FileFault, DocumentsAndTheirSchemasAreReadWhole) {
  const std::string schema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:";
  write("a.xsd", schema + "a'/>");
  const std::wstring document =
      write("a.wsdl", "<definitions><types>" + schema +
                          "b'><xs:import schemaLocation='a.xsd'/></xs:schema></types></definitions>");
  sweep("schemas of one reader", [&] {
    CWsdlParser parser;
    parser.Parse(WideString(document.c_str()));
    return std::to_string(parser.GetSchemaInfo().getSize());
  });
  // What failed for once is no fault of the document.
  sweep("asked again", [&] {
    CWsdlParser parser;
    parser.Parse(WideString(document.c_str()));
    try {
      parser.GetSchemaInfo();
    } catch (const tovin::Exception&) {
      callsLeft = -1;
    }
    return std::to_string(parser.GetSchemaInfo().getSize());
  });
}

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

TEST(SocketFault, EachCallFailsOnceAndTheNextRequestSucceeds) {
  const ScopedVariable noProxy("no_proxy", "*");
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
      eventOfCall = error;
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
