#pragma once

#include <cstddef>
#include <string>

#include "ztservice/Service.h"

namespace ztservice::call {

struct TemplateOptions {
  /// Whether what may be left out is in it.
  bool isFull = true;
  /// Whether it is of what the operation answers.
  bool isAnswer = false;
  /// What is longer is refused.
  size_t lines = 100'000;
};

/// The values of an operation's request, or answer, ready to be filled in: JSON with comments that say the
/// type of each, how often it comes, what it may be, and what may stand in its place.
///
/// - Shape: as it stands, it makes a valid request, as far as samples can be found: of a choice it has the
///   first alternative, of a type inside itself nothing that may be left out.
/// - Errors: Error for an operation that cannot be called, and for what has too many lines.
ZTSERVICE_API std::string makeTemplate(const Service& service, const Port& port, const Operation& operation,
                                       const TemplateOptions& options = {});

}  // namespace ztservice::call
