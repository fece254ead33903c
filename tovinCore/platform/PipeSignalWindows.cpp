#include "tovinCore/platform/PipeSignal.h"

// Here such a write just fails.
namespace tovin::platform {

PipeSignalBlock::PipeSignalBlock() noexcept = default;
PipeSignalBlock::~PipeSignalBlock() = default;

}  // namespace tovin::platform
