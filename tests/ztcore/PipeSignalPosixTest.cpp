#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <thread>

#include "tests/support/SocketServer.h"
#include "tests/support/TempFolder.h"
#include "tovinCore/platform/PipeSignal.h"
#include "ztcore/CHttp.h"

namespace {

using tovin::platform::PipeSignalBlock;

bool isPending() {
  sigset_t pending;
  return sigpending(&pending) == 0 && sigismember(&pending, SIGPIPE) == 1;
}

bool isBlocked() {
  sigset_t blocked;
  return pthread_sigmask(SIG_BLOCK, nullptr, &blocked) == 0 && sigismember(&blocked, SIGPIPE) == 1;
}

void writeToNobody() {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  EXPECT_EQ(write(ends[1], "x", 1), -1);
  close(ends[1]);
}

TEST(PipeSignal, OneThatIsBlockedLeavesNothingBehind) {
  {
    const PipeSignalBlock outer;
    const PipeSignalBlock inner;
    writeToNobody();
    EXPECT_TRUE(isPending());
  }
  EXPECT_FALSE(isPending());
  EXPECT_FALSE(isBlocked());
}

TEST(PipeSignal, OneThatWaitedBeforeStillWaits) {
  const PipeSignalBlock test;  // takes away what the test leaves
  writeToNobody();
  {
    const PipeSignalBlock block;
    writeToNobody();
  }
  EXPECT_TRUE(isPending());
  EXPECT_TRUE(isBlocked());
}

TEST(PipeSignal, RequestsInThreadsLeaveItToTheProcess) {
  const testsupport::ScopedVariable noProxy("no_proxy", "*");
  const auto work = [] {
    for (int i = 0; i < 20; ++i) {
      testsupport::SocketServer server({[](testsupport::Connection&) {}});
      CHttp http(1);
      EXPECT_THROW(
          {
            http.OpenConnect(server.url().c_str(), CHttp::Post, CHttp::Chunked, CHttp::MultipartForm);
            const std::string content(1'000'000, 'x');
            for (;;) http.AppendData(content.data(), content.size());
          },
          CHttpException);
    }
  };
  std::thread other(work);
  work();
  other.join();
  struct sigaction action;
  ASSERT_EQ(sigaction(SIGPIPE, nullptr, &action), 0);
  EXPECT_EQ(action.sa_handler, SIG_DFL);
}

}  // namespace
