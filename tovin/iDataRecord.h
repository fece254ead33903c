#pragma once

#include "tovin/iNode.h"

namespace tovin {

/// A record of data that has a tree.
class TOVIN_API iDataRecord : public virtual Object {
 public:
  /// Borrowed; null for a record without a tree.
  virtual iNode* getRootNode() const = 0;
};

}  // namespace tovin
