#include <pthread.h>
#include <signal.h>

#include <cerrno>
#include <ctime>

#include "tovinCore/platform/PipeSignal.h"

namespace tovin::platform {
namespace {

sigset_t pipeSignal() noexcept {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGPIPE);
  return set;
}

// The signal of a write is the thread's own, and its alone.
bool isPending() noexcept {
  sigset_t pending;
  return sigpending(&pending) == 0 && sigismember(&pending, SIGPIPE) == 1;
}

}  // namespace

PipeSignalBlock::PipeSignalBlock() noexcept {
  const sigset_t set = pipeSignal();
  sigset_t before;
  if (isPending() || pthread_sigmask(SIG_BLOCK, &set, &before) != 0) return;
  before_ = sigismember(&before, SIGPIPE) == 1 ? Before::blocked : Before::notBlocked;
}

// One that waited before is not ours to take away, and no second one waits beside it.
PipeSignalBlock::~PipeSignalBlock() {
  if (before_ == Before::waiting) return;
  const int error = errno;
  const sigset_t set = pipeSignal();
  const timespec atOnce{};
  while (isPending() && sigtimedwait(&set, nullptr, &atOnce) < 0 && errno == EINTR) {
  }
  if (before_ == Before::notBlocked) pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
  errno = error;
}

}  // namespace tovin::platform
