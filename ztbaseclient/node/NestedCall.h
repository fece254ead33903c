#pragma once

#include "tovinCore/Exception.h"

/// While one lives, a node's own record or copy is being made inside that of another: what takes stack by the
/// depth of the tree is refused before the stack ends.
class NestedCall {
 public:
  NestedCall() {
    if (depth_ == deepest) {
      throw tovin::Exception(L"Nodes that write, read or copy themselves are nested deeper than %d", deepest);
    }
    ++depth_;
  }
  NestedCall(const NestedCall&) = delete;
  NestedCall& operator=(const NestedCall&) = delete;
  ~NestedCall() { --depth_; }

 private:
  static constexpr int deepest = 1000;
  static inline thread_local int depth_ = 0;
};
