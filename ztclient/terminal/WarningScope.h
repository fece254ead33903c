#pragma once

#include <utility>

#include "tovinCore/Exception.h"

/// Who hears the library's warnings as long as it lives; then the one before does again.
class WarningScope {
 public:
  explicit WarningScope(tovin::Exception::WarningHandler handler)
      : before_(tovin::Exception::setWarningHandler(std::move(handler))) {}
  WarningScope(const WarningScope&) = delete;
  WarningScope& operator=(const WarningScope&) = delete;
  ~WarningScope() { tovin::Exception::setWarningHandler(std::move(before_)); }

 private:
  tovin::Exception::WarningHandler before_;
};
