#pragma once

#include <string>

#include "tests/ztservice/Services.h"
#include "ztclient/answers/Json.h"

namespace testsupport {

/// The answer as JSON.
Json answerOf(const ztservice::Service& service);

/// A type in one line: "complex X(base) {a:int 0..1 #1.1 @1; @id:string}". Wildcards are "*", what is nested
/// stands in brackets, errors are "!".
std::string summaryOf(const Json& type);

}  // namespace testsupport
