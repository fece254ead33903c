// A program of its own, because it stands between the library and the system's files: each call of an
// operation fails once, in turn, or moves one byte only.
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <functional>
#include <utility>

#include "tests/support/Bytes.h"
#include "tests/support/TempFolder.h"
#include "tovin/Constants.h"
#include "tovinCore/platform/WholeFile.h"
#include "ztbaseclient/tools/CConsoleReader.h"
#include "ztbaseclient/tools/CDiffFiles.h"
#include "ztbaseclient/wsdl/CSchema.h"
#include "ztbaseclient/wsdl/CWsdlParser.h"
#include "ztcore/ztRegistry.h"
#include "ztcore/ztServerConfig.h"

namespace {

// What happens at a call: an error, or for reads and writes a single byte.
constexpr int oneByte = -1;
int callsLeft = -1;
int eventOfCall = 0;
bool wasShort = false;

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

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// Seen by the libraries in place of the system's.
#pragma GCC visibility push(default)
extern "C" {

int open(const char* name, int flags, ...) {
  static auto* const real = next<int(const char*, int, ...)>("open");
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return failsNow() ? -1 : real(name, flags, mode);
}
ssize_t read(int file, void* bytes, size_t count) {
  static auto* const real = next<ssize_t(int, void*, size_t)>("read");
  const size_t some = allowed(count);
  return some == 0 && count > 0 ? -1 : real(file, bytes, some);
}
ssize_t write(int file, const void* bytes, size_t count) {
  static auto* const real = next<ssize_t(int, const void*, size_t)>("write");
  const size_t some = allowed(count);
  return some == 0 && count > 0 ? -1 : real(file, bytes, some);
}
off_t lseek(int file, off_t place, int from) noexcept {
  static auto* const real = next<off_t(int, off_t, int)>("lseek");
  return failsNow() ? -1 : real(file, place, from);
}
int fstat(int file, struct stat* facts) noexcept {
  static auto* const real = next<int(int, struct stat*)>("fstat");
  return failsNow() ? -1 : real(file, facts);
}
int fsync(int file) {
  static auto* const real = next<int(int)>("fsync");
  return failsNow() ? -1 : real(file);
}
int mkstemp(char* name) {
  static auto* const real = next<int(char*)>("mkstemp");
  return failsNow() ? -1 : real(name);
}
int rename(const char* from, const char* to) noexcept {
  static auto* const real = next<int(const char*, const char*)>("rename");
  return failsNow() ? -1 : real(from, to);
}
// The file is closed all the same, as the system does it.
int close(int file) {
  static auto* const real = next<int(int)>("close");
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

}  // namespace
