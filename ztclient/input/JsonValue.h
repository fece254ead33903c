#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ztservice/call/Value.h"

/// Reads JSON, in which comments may stand, with its numbers as they are written.
/// \param name what it is called in errors. Errors: "NAME:LINE:COLUMN: what is wrong".
ztservice::call::Value readJson(std::string_view text, const std::string& name);

/// Sets what a FIELD=TEXT or FIELD:=JSON says, FIELD being "a.b[2].c": the members on the way are made where
/// there are none. Index 0 is the first of what repeats; one more than there are appends.
///
/// - Errors: Misuse for what is neither, for a name on the way that is no object, and for an
///   index that leaves a gap.
class FieldSetter {
 public:
  /// \param values outlives it.
  explicit FieldSetter(ztservice::call::Value& values) : values_(values) {}

  /// The first of a path replaces what is there, each further one comes behind it.
  void set(const std::string& field);

 private:
  ztservice::call::Value& values_;
  std::vector<std::string> seen_;
};
