#pragma once

#include <cstddef>

#include "tovin/Export.h"

namespace tovin {

/// The framework's raw memory: blocks that every module of the process may free.
class TOVIN_API AllocBase {
 public:
  /// Null when there is no memory.
  static void* _alloc(size_t bytes) noexcept;
  static void _free(void* block) noexcept;
};

}  // namespace tovin
