#pragma once

#include "tovinCore/Export.h"

namespace tovin::platform {

/// While one lives, a write to a connection that nobody reads fails on this thread and is no signal; the
/// process's own handling of the signal is not touched. They nest.
///
/// - Threads: of the thread that makes it, which must end it too.
class TOVINCORE_API PipeSignalBlock {
 public:
  PipeSignalBlock() noexcept;
  PipeSignalBlock(const PipeSignalBlock&) = delete;
  PipeSignalBlock& operator=(const PipeSignalBlock&) = delete;
  ~PipeSignalBlock();

 private:
  enum class Before { notBlocked, blocked, waiting };

  Before before_ = Before::waiting;
};

}  // namespace tovin::platform
