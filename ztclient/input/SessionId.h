#pragma once

#include <string>

/// A session id is a credential: what stands on a command line is seen by everybody on the computer, a file
/// and the environment are not.
namespace sessionId {

/// The first line of a file, or of standard input for "-". Errors: "The session id is empty", "… is not
/// UTF-8".
std::string fromFile(const std::string& file);
/// What ZTCLIENT_SESSION says; empty for nothing.
std::string fromEnvironment();

}  // namespace sessionId
