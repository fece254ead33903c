#include "tovinCore/Wipe.h"

#include <cstring>

namespace tovin {
namespace {

// Read anew at each call: the compiler cannot know that it is memset, and so cannot see the stores as dead.
void* (*const volatile fill)(void*, int, size_t) = std::memset;

}  // namespace

void wipe(void* memory, size_t bytes) noexcept {
  if (bytes > 0) fill(memory, 0, bytes);
}

}  // namespace tovin
