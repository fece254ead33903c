#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "ztservice/Export.h"

namespace ztservice::call {

/// A user's name and password in the header of a message (OASIS, WS-Security UsernameToken Profile 1.1).
struct Security {
  std::string user;
  std::string password;
  /// Whether the password goes as the digest of itself, a nonce and the time: Base64(SHA-1(nonce + created +
  /// password)); else as it is.
  bool isDigest = false;
  /// How long the message is good for; no time stamp for none.
  std::optional<std::chrono::seconds> lifetime;
  /// Drawn, and the clock's, where they are left out.
  std::string nonce;
  std::optional<std::chrono::sys_seconds> created;
};

}  // namespace ztservice::call
