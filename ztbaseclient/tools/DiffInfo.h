#pragma once

#include <limits>

#include "tovin/BaseString.h"
#include "ztbaseclient/tools/CDiffFiles.h"

/// The worst difference of a comparison so far.
///
/// - Units: positions in characters from the line's start; the marker has a "^" under each character that
///   differs, of up to 8.
/// - Ownership: owns copies of the two lines.
struct CDiffFiles::DiffInfo {
  static constexpr int markerLength = 8;

  int position1 = 0;
  int position2 = 0;
  int lineNumber = 0;
  double measure = std::numeric_limits<double>::quiet_NaN();
  tovin::WideString line1;
  tovin::WideString line2;
  wchar_t marker[markerLength + 1] = {};
};
